#include "vomsg/foundation/VoMsgTreeEpoch.h"

#include <atomic>

namespace vomsg::detail {

namespace {

// Threads change trees of their own, at the same time.
constinit std::atomic<std::uint32_t> gTreeEpoch{1};
constinit std::atomic<std::uint32_t> gBoundaryEpoch{1};

void beginNext(std::atomic<std::uint32_t>& epoch) {
  if (epoch.fetch_add(1, std::memory_order_relaxed) + 1 == 0) epoch.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

std::uint32_t treeEpoch() noexcept { return gTreeEpoch.load(std::memory_order_relaxed); }

void noteTreeChange() noexcept { beginNext(gTreeEpoch); }
std::uint32_t boundaryEpoch() noexcept { return gBoundaryEpoch.load(std::memory_order_relaxed); }
void noteBoundaryChange() noexcept { beginNext(gBoundaryEpoch); }

}  // namespace vomsg::detail
