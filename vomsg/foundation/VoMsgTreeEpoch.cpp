#include "vomsg/foundation/VoMsgTreeEpoch.h"

#include <atomic>

namespace vomsg::detail {

namespace {

// Threads change trees of their own, at the same time.
constinit std::atomic<std::uint32_t> gEpoch{1};

}  // namespace

std::uint32_t treeEpoch() noexcept { return gEpoch.load(std::memory_order_relaxed); }

void noteTreeChange() noexcept {
  if (gEpoch.fetch_add(1, std::memory_order_relaxed) + 1 == 0) gEpoch.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace vomsg::detail
