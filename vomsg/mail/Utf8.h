// UTF-8 as mail needs it: character by character, with what is none told apart.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoMsgCharsetConverter.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"

namespace vomsg {

// One UTF-8 character at the front of `text`: its length in bytes, and its code. Length 1 and code kNotUtf8 when the
// bytes are no UTF-8. `text` is not empty.
inline constexpr char32_t kNotUtf8 = 0xFFFFFFFF;
struct Character {
  std::size_t length;
  char32_t code;
};
inline Character firstCharacter(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t lead = byte(0);
  if (lead < 0x80) return {1, lead};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {1, kNotUtf8};
  char32_t code = lead & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {1, kNotUtf8};
    code = code << 6 | (byte(i) & 0x3Fu);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return {1, kNotUtf8};
  return {length, code};
}

// Control characters, and marks that change the direction or are not to be seen.
inline bool isUnsafe(char32_t code) {
  struct Range {
    char32_t first, last;
  };
  constexpr Range kRanges[] = {
      {0x00, 0x1F},       // control characters
      {0x7F, 0x9F},       // more of them
      {0xAD, 0xAD},       // soft hyphen
      {0x061C, 0x061C},   // Arabic letter mark
      {0x200B, 0x200F},   // zero width, direction
      {0x2028, 0x202E},   // line and paragraph ends, direction
      {0x2060, 0x206F},   // invisible operators, direction
      {0xFEFF, 0xFEFF},   // byte order mark
      {0xFFF9, 0xFFFB},   // interlinear annotation
      {0xE0000, 0xE007F}  // tags
  };
  for (const Range& range : kRanges) {
    if (code >= range.first && code <= range.last) return true;
  }
  return false;
}

inline bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

inline bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    if (character.code == kNotUtf8) return false;
    text.remove_prefix(character.length);
  }
  return true;
}

namespace inner {

inline char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
inline std::string lowered(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(), lower);
  return out;
}
inline bool equalNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lower(x) == lower(y); });
}
inline std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r\n";
  const auto first = text.find_first_not_of(kBlank);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

// What a header says in bytes that are no UTF-8 is read as windows-1252, which gives every byte a character: wrong for
// some, readable for most, and UTF-8 for whoever asked for UTF-8.
inline std::string asUtf8(const char* value) {
  std::string text = value != nullptr ? value : "";
  if (isUtf8(text)) return text;
  std::string out;
  VoMsgConverterFactory* const factory = VoMsgConverterFactory::getInstance();
  VoMsgCharsetConverter* const converter = factory->createConverter("utf-8", "windows-1252", 1, '?');
  if (converter != nullptr) {
    if (voFailed(converter->convert(out, text))) out.clear();
    factory->destoryConverter(converter);
  }
  return isUtf8(out) ? out : std::string();
}

}  // namespace inner

}  // namespace vomsg
