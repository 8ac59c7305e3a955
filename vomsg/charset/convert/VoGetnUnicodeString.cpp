#include "vomsg/charset/convert/VoGetnUnicodeString.h"

#include "vomsg/foundation/VoMsgGuard.h"

namespace {

constexpr bool isLead(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool isTrail(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }
constexpr bool isSurrogate(char16_t unit) { return (unit & 0xF800) == 0xD800; }

}  // namespace

VoErrorCode voGetnUnicodeString(const std::u16string& src, int& pos, unsigned int budget, unsigned int width,
                                std::u16string& out) {
  if (pos < 0 || static_cast<std::int64_t>(width) > static_cast<std::int32_t>(budget)) return kVoBadArgument;
  return vomsg::detail::guarded([&] {
    std::int64_t left = static_cast<std::int32_t>(budget);
    std::size_t at = static_cast<std::size_t>(pos);
    while (at < src.size()) {
      const char16_t unit = src[at];
      const bool pair = isLead(unit) && at + 1 < src.size() && isTrail(src[at + 1]);
      const std::size_t length = pair ? 2 : 1;
      out.append(src, at, length);
      at += length;
      left -= unit >= 0x20 && unit <= 0x7E ? 1 : static_cast<std::int64_t>(width);
      if (left <= static_cast<std::int64_t>(width) && (pair || !isSurrogate(unit))) break;
    }
    pos = static_cast<int>(at);
    return kVoSuccess;
  });
}
