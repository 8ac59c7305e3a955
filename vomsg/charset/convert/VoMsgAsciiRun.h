// The stretches of plain ASCII that make up most mail, taken eight bytes at a time.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vomsg::detail {

using Bytes = const unsigned char*;

inline std::string_view viewOf(Bytes from, Bytes to) noexcept {
  return {reinterpret_cast<const char*>(from), static_cast<std::size_t>(to - from)};
}

// How many bytes at the start of `text` are neither NUL nor above 0x7F.
inline std::size_t asciiRun(std::string_view text) noexcept {
  constexpr std::uint64_t kHighBits = 0x8080808080808080u;
  constexpr std::uint64_t kOnes = 0x0101010101010101u;
  std::size_t n = 0;
  for (; text.size() - n >= sizeof(std::uint64_t); n += sizeof(std::uint64_t)) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + n, sizeof word);
    // Without high bits the subtraction borrows exactly where a byte is zero.
    if ((word | (word - kOnes)) & kHighBits) break;
  }
  while (n < text.size() && static_cast<signed char>(text[n]) > 0) ++n;
  return n;
}

// The text at the start of [at, end), whose first byte is known to be below 0x80. That byte may be a NUL.
inline std::string_view textRun(Bytes at, Bytes end) noexcept {
  return viewOf(at, at + std::max<std::size_t>(1, asciiRun(viewOf(at, end))));
}

}  // namespace vomsg::detail
