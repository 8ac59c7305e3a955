// Allocations that fail, for all of this program.
#pragma once

#include <utility>

namespace vomsg::test {

extern long gUntilFailure;  // allocations that still succeed; negative: all do

// Runs `edit` with memory that runs out after `n` allocations. `isShort`: it did.
template <class Edit>
auto withFailingMemory(long n, bool& isShort, Edit&& edit) {
  gUntilFailure = n;
  const auto result = edit();
  isShort = gUntilFailure == 0;
  gUntilFailure = -1;
  return result;
}

// What a test needs for itself meanwhile.
template <class Make>
auto withMemory(Make&& make) {
  const long left = std::exchange(gUntilFailure, -1);
  const auto made = make();
  gUntilFailure = left;
  return made;
}

}  // namespace vomsg::test
