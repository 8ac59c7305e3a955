// What the library asks of the system for heap blocks of many megabytes.
#pragma once

#include <cstddef>

namespace vomsg::detail {

// Asks for huge pages behind a large block that is about to be filled; small blocks are left alone. Writing fresh
// memory costs several times more in page faults than in copying, and 2 MiB pages save nearly all of them. Only
// pages that lie wholly inside the block are meant, so it takes no more memory than before. A hint: never fails.
void adviseLargeBlock(void* block, std::size_t size) noexcept;

}  // namespace vomsg::detail
