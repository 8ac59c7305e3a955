#include "cli/Printable.h"

#include <cstdint>
#include <cstdio>

namespace cli {

Character firstCharacter(std::string_view text) {
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

bool isUnsafe(char32_t code) {
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

namespace {

// Whether a character would do harm in the middle of a text: all that is unsafe but what writing systems need.
bool isUnsafeInText(char32_t code) {
  const bool isWriting = code == '\t' || code == '\n' || code == 0xAD || code == 0x061C ||
                         (code >= 0x200B && code <= 0x200F) || (code >= 0x2060 && code <= 0x2065) || code == 0xFEFF;
  return isUnsafe(code) && !isWriting;
}

void appendEscaped(std::string& out, std::string_view text, const Character& character) {
  char escape[16];
  if (character.code == kNotUtf8 || character.code < 0x80)
    std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned>(static_cast<std::uint8_t>(text[0])));
  else
    std::snprintf(escape, sizeof escape, "\\u{%04X}", static_cast<unsigned>(character.code));
  out += escape;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    if (character.code == '\\')
      out += "\\\\";
    else if (character.code == kNotUtf8 || isUnsafe(character.code))
      appendEscaped(out, text, character);
    else
      out.append(text, 0, character.length);
    text.remove_prefix(character.length);
  }
  return out;
}

std::string printableLines(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    if (text.substr(0, 2) == "\r\n")
      ;  // the LF alone ends the line
    else if (character.code == kNotUtf8 || isUnsafeInText(character.code))
      appendEscaped(out, text, character);
    else
      out.append(text, 0, character.length);
    text.remove_prefix(character.length);
  }
  return out;
}

}  // namespace cli
