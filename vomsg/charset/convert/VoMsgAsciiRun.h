// The stretches of plain ASCII that make up most mail, taken eight bytes at a time.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace vomsg::detail {

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

}  // namespace vomsg::detail
