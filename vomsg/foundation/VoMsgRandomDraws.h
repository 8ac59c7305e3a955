// The one generator behind identifiers and boundaries: lrand48, so that a host that seeds it gets the same ones again.
#pragma once

#include <cstdint>

namespace vomsg::detail {

// Draws that belong together: while it lives, no other thread of the library draws or seeds.
class RandomDraws {
 public:
  RandomDraws();
  ~RandomDraws();
  RandomDraws(const RandomDraws&) = delete;
  RandomDraws& operator=(const RandomDraws&) = delete;

  std::uint32_t next();  // 31 bits
  void seed(long value);
};

}  // namespace vomsg::detail
