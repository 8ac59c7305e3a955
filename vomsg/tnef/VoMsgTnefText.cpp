#include "vomsg/tnef/VoMsgTnefText.h"

#include <cstddef>
#include <cstdint>

#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/encoding/VoMsgUtf16Coder.h"
#include "vomsg/tnef/VoTnefInteger.h"

namespace vomsg::detail {

std::string utf8FromUtf16(std::string_view bytes) {
  std::string text;
  SurrogateJoiner units;
  const auto append = [&](char32_t character) { appendUtf8(text, character); };
  for (; bytes.size() > 1; bytes.remove_prefix(2)) {
    const std::uint32_t unit = littleEndian(reinterpret_cast<const unsigned char*>(bytes.data()), 2);
    if (unit == 0) break;
    units.add(unit, append);
  }
  units.finish(append);
  return text;
}

std::string utf16FromUtf8(std::string_view text) {
  std::string bytes;
  bool isWhole = true;
  while (!text.empty()) appendUtf16Le(bytes, cutUtf8(text, isWhole));
  return bytes;
}

std::string convertedText(const char* text, const char* from, const char* to) {
  std::string out;
  return convertText(out, to, from, text) == Conversion::done ? out : std::string();
}

}  // namespace vomsg::detail
