// UTF-16 and UTF-32 (RFC 2781) to and from UTF-8: units in memory, and bytes in either order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "vomsg/encoding/VoMsgUtf8Coder.h"

namespace vomsg::detail {

// How many of the `count` units at `from` are below 0x80, copied to `to` as bytes: four at a time, for they make up
// most of mail. Room for three bytes more than `count` is needed.
inline std::size_t copyAsciiUnits(const char16_t* from, std::size_t count, char* to) noexcept {
  std::size_t n = 0;
  for (; count - n >= 4; n += 4) {
    std::uint64_t four;
    std::memcpy(&four, from + n, sizeof four);
    if (four & 0xFF80FF80FF80FF80u) break;
    for (std::size_t i = 0; i < 4; ++i) to[n + i] = static_cast<char>(from[n + i]);
  }
  for (; n < count && from[n] < 0x80; ++n) to[n] = static_cast<char>(from[n]);
  return n;
}

// Characters from the code units of a text that comes in pieces, its halves of surrogate pairs joined across them.
class SurrogateJoiner {
 public:
  // Calls `sink(character)` for what is complete with `unit`; a half without its partner is handed on as it is.
  template <class Sink>
  void add(char32_t unit, Sink&& sink) {
    if (mHigh != 0) {
      const char32_t high = mHigh;
      mHigh = 0;
      if (isLowSurrogate(unit)) return sink(joinSurrogates(high, unit));
      sink(high);
    }
    if (isHighSurrogate(unit))
      mHigh = unit;
    else
      sink(unit);
  }
  // The text ends.
  template <class Sink>
  void finish(Sink&& sink) {
    if (mHigh != 0) sink(mHigh);
    mHigh = 0;
  }
  bool isPending() const { return mHigh != 0; }

 private:
  char32_t mHigh = 0;
};

// Appends a character as UTF-16LE; it is one.
inline void appendUtf16Le(std::string& bytes, char32_t character) {
  const auto put = [&](char32_t unit) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  };
  if (character < 0x10000) return put(character);
  put(0xD800 + ((character - 0x10000) >> 10));
  put(0xDC00 + (character & 0x3FF));
}

}  // namespace vomsg::detail
