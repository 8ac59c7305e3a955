// When trees of entities change shape or type. What an entity learns by climbing to the root it keeps together with the
// epoch in which it climbed, and climbs again once another one has begun. One number for all trees: a change is rare,
// and which entities it concerns would be as costly to find as what they ask.
#pragma once

#include <cstdint>

namespace vomsg::detail {

// Never 0, so that 0 can stand for "never asked".
std::uint32_t treeEpoch() noexcept;
// A Content-Type was changed, or an entity that may have been asked something got another parent.
void noteTreeChange() noexcept;

// The same for the boundaries that multiparts declare: begins anew when one may have been set.
std::uint32_t boundaryEpoch() noexcept;
void noteBoundaryChange() noexcept;

}  // namespace vomsg::detail
