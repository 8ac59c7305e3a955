#include "vomsg/tnef/VoMsgTnefText.h"

#include <cstddef>
#include <cstdint>

#include "vomsg/charset/convert/VoConvertCharset.h"
#include "vomsg/encoding/VoUtf8.h"
#include "vomsg/tnef/VoTnefInteger.h"

namespace vomsg::detail {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

constexpr bool isHigh(std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isLow(std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// The library's own helper leaves the offset of 0x10000 out of a pair on purpose, for texts that never leave it.
// These texts do, as file names, so only what is no pair goes through it.
void appendUtf8(std::string& text, std::uint32_t code) {
  unsigned char bytes[4];
  if (code < 0x10000) {
    text.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(voUcs2ToUtf8(code, bytes)));
    return;
  }
  for (int shift : {18, 12, 6, 0})
    text += static_cast<char>(shift == 18 ? 0xF0 | code >> 18 : 0x80 | (code >> shift & 0x3F));
}

void appendUnit(std::string& bytes, std::uint32_t unit) {
  bytes += static_cast<char>(unit & 0xFF);
  bytes += static_cast<char>(unit >> 8);
}

// Cuts one character off `text`; U+FFFD and one byte where there is none.
std::uint32_t cutCharacter(std::string_view& text) {
  const auto byteAt = [&](std::size_t i) -> std::uint32_t { return static_cast<unsigned char>(text[i]); };
  const std::uint32_t lead = byteAt(0);
  const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  std::uint32_t code = length == 1 ? lead : lead & (0xFFu >> (length + 1));
  bool good = (lead < 0x80 || lead >= 0xC2) && lead < 0xF5 && length <= text.size();
  for (std::size_t i = 1; good && i < length; ++i) {
    good = (byteAt(i) & 0xC0) == 0x80;
    code = code << 6 | (byteAt(i) & 0x3F);
  }
  good = good && code >= kSmallest[length] && code <= 0x10FFFF && !isHigh(code) && !isLow(code);
  text.remove_prefix(good ? length : 1);
  return good ? code : kReplacement;
}

}  // namespace

std::string utf8FromUtf16(std::string_view bytes) {
  std::string text;
  const auto unitAt = [&](std::size_t i) -> std::uint32_t {
    if (i + 1 >= bytes.size()) return 0;
    return littleEndian(reinterpret_cast<const unsigned char*>(bytes.data()) + i, 2);
  };
  for (std::size_t i = 0; const std::uint32_t unit = unitAt(i); i += 2) {
    const std::uint32_t next = unitAt(i + 2);
    if (isHigh(unit) && isLow(next)) {
      appendUtf8(text, 0x10000 + ((unit & 0x3FF) << 10) + (next & 0x3FF));
      i += 2;
    } else {
      appendUtf8(text, isHigh(unit) || isLow(unit) ? kReplacement : unit);
    }
  }
  return text;
}

std::string utf16FromUtf8(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const std::uint32_t code = cutCharacter(text);
    if (code >= 0x10000) {
      appendUnit(bytes, 0xD800 + ((code - 0x10000) >> 10));
      appendUnit(bytes, 0xDC00 + (code & 0x3FF));
    } else {
      appendUnit(bytes, code);
    }
  }
  return bytes;
}

std::string convertText(const char* text, const char* from, const char* to) {
  std::string out(std::char_traits<char>::length(text) * 3 + 16, '\0');
  VoErrorCode code = kVoSuccess;
  int size = voConvertCharset(out.data(), static_cast<unsigned>(out.size()), to, text, from, &code);
  if (size > static_cast<int>(out.size())) {
    out.resize(static_cast<std::size_t>(size));
    size = voConvertCharset(out.data(), static_cast<unsigned>(out.size()), to, text, from, &code);
  }
  if (size <= 0 || voFailed(code)) return {};
  out.resize(static_cast<std::size_t>(size) - 1);
  return out;
}

}  // namespace vomsg::detail
