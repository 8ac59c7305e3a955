// A machine that runs short on command: allocations and openings of files that fail, for the whole test program, and a
// count of the blocks that are alive.
#pragma once

#include <cstddef>

namespace vomsg::test {

enum class Scarce { memory, descriptors };

// While it lives, the request with that number (from 0) fails, and with `lasting` every later one too.
class Shortage {
 public:
  Shortage(Scarce what, long number, bool lasting);
  ~Shortage();
  Shortage(const Shortage&) = delete;
  Shortage& operator=(const Shortage&) = delete;
  bool struck() const;  // a request was refused
};

// Counts the requests while it lives; none fails.
class Demand {
 public:
  explicit Demand(Scarce what);
  ~Demand();
  Demand(const Demand&) = delete;
  Demand& operator=(const Demand&) = delete;
  long count() const;
};

std::size_t blocksAlive();

}  // namespace vomsg::test
