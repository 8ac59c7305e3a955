// The stretches of plain ASCII that make up most mail, taken eight bytes at a time.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vomsg::detail {

// The text that converters convert.
inline std::string_view untilNul(std::string_view text) noexcept { return text.substr(0, text.find('\0')); }

using Bytes = const unsigned char*;

inline std::string_view viewOf(Bytes from, Bytes to) noexcept {
  return {reinterpret_cast<const char*>(from), static_cast<std::size_t>(to - from)};
}

// How many bytes at the start of `text` are below 0x80.
inline std::size_t asciiRun(std::string_view text) noexcept {
  constexpr std::uint64_t kHighBits = 0x8080808080808080u;
  std::size_t n = 0;
  for (; text.size() - n >= sizeof(std::uint64_t); n += sizeof(std::uint64_t)) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + n, sizeof word);
    if (word & kHighBits) break;
  }
  while (n < text.size() && static_cast<signed char>(text[n]) >= 0) ++n;
  return n;
}

// The ASCII at the start of [at, end).
inline std::string_view textRun(Bytes at, Bytes end) noexcept { return viewOf(at, at + asciiRun(viewOf(at, end))); }

}  // namespace vomsg::detail
