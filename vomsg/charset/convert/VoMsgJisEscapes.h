// The escape sequences that switch ISO-2022-JP between its character sets.
#pragma once

#include <string>
#include <string_view>

namespace vomsg::detail {

inline constexpr std::string_view kJisToAscii = "\x1B(B";
inline constexpr std::string_view kJisToRoman = "\x1B(J";
inline constexpr std::string_view kJisToKanji1978 = "\x1B$@";
inline constexpr std::string_view kJisToKanji = "\x1B$B";
inline constexpr std::string_view kJisToKana = "\x1B(I";
inline constexpr std::size_t kJisEscapeLength = 3;

// True when `text` begins with one of the four sequences.
bool startsWithJisEscape(std::string_view text) noexcept;

// `text` without those sequences that another one follows at once: of several back to back only the last counts, and
// some mailers' lines begin with a few.
std::string dropRedundantJisEscapes(std::string_view text);

}  // namespace vomsg::detail
