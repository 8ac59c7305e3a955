#include "cli/Printable.h"

#include <cstdint>
#include <cstdio>

namespace cli {

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
