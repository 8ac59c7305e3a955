// UTF-8 (RFC 3629), one character at a time: the one place that knows how its bytes are made up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vomsg::detail {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

constexpr bool isSurrogate(char32_t unit) noexcept { return (unit & 0xFFFFF800u) == 0xD800u; }
constexpr bool isHighSurrogate(char32_t unit) noexcept { return (unit & 0xFFFFFC00u) == 0xD800u; }
constexpr bool isLowSurrogate(char32_t unit) noexcept { return (unit & 0xFFFFFC00u) == 0xDC00u; }
constexpr char32_t joinSurrogates(char32_t high, char32_t low) noexcept {
  return 0x10000u + ((high & 0x3FFu) << 10) + (low & 0x3FFu);
}

constexpr std::size_t utf8Length(char32_t value) noexcept {
  return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

// Writes the low bits of `value` as a sequence of `length` bytes, 1 to 4, whether it needs as many or not. Returns the
// end of what was written.
template <class Byte>
constexpr Byte* putUtf8(Byte* out, char32_t value, std::size_t length) noexcept {
  constexpr unsigned kLeads[] = {0, 0, 0xC0, 0xE0, 0xF0};
  for (std::size_t left = length; left-- > 1; value >>= 6) out[left] = static_cast<Byte>(0x80u | (value & 0x3Fu));
  out[0] = static_cast<Byte>(kLeads[length] | value);
  return out + length;
}

// U+FFFD for what is no character.
inline void appendUtf8(std::string& out, char32_t character) {
  if (character > 0x10FFFF || isSurrogate(character)) character = kReplacementCharacter;
  char bytes[4];
  out.append(bytes, putUtf8(bytes, character, utf8Length(character)));
}

// Cuts one character off `text`, which is not empty. Shortest forms only, no surrogates, nothing above U+10FFFF: what
// is none of these costs one byte and gives U+FFFD, and `isWhole` (true at first) becomes false.
constexpr char32_t cutUtf8(std::string_view& text, bool& isWhole) noexcept {
  const auto byteAt = [&](std::size_t i) -> char32_t { return static_cast<unsigned char>(text[i]); };
  const char32_t lead = byteAt(0);
  if (lead < 0x80) {
    text.remove_prefix(1);
    return lead;
  }
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  char32_t code = lead & (0xFFu >> (length + 1));
  bool good = lead >= 0xC2 && lead < 0xF5 && length <= text.size();
  for (std::size_t i = 1; good && i < length; ++i) {
    good = (byteAt(i) & 0xC0) == 0x80;
    code = code << 6 | (byteAt(i) & 0x3F);
  }
  good = good && utf8Length(code) == length && code <= 0x10FFFF && !isSurrogate(code);
  text.remove_prefix(good ? length : 1);
  isWhole = isWhole && good;
  return good ? code : kReplacementCharacter;
}

constexpr bool isUtf8(std::string_view text) noexcept {
  bool isWhole = true;
  while (isWhole && !text.empty()) cutUtf8(text, isWhole);
  return isWhole;
}

}  // namespace vomsg::detail
