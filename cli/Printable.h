// Text from mail on its way to a terminal.
#pragma once

#include <string>
#include <string_view>

namespace cli {

// `text` as UTF-8 in which nothing steers a terminal or reorders a line: control characters, directional marks and
// bytes that are no UTF-8 come out as \xNN or \u{NNNN}, a backslash as two.
std::string printable(std::string_view text);
// The same for a text of several lines: line ends, tabs and backslashes stay, and so do the marks that scripts need to
// be read rightly (joiners, left-to-right and right-to-left marks). CR LF becomes LF.
std::string printableLines(std::string_view text);

// One UTF-8 character at the front of `text`: its length in bytes, and its code. Length 1 and code kNotUtf8 when the
// bytes are no UTF-8. `text` is not empty.
inline constexpr char32_t kNotUtf8 = 0xFFFFFFFF;
struct Character {
  std::size_t length;
  char32_t code;
};
Character firstCharacter(std::string_view text);
// Control characters, and marks that change the direction or are not to be seen.
bool isUnsafe(char32_t code);

}  // namespace cli
