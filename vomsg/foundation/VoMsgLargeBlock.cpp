#include "vomsg/foundation/VoMsgLargeBlock.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstdint>

namespace vomsg::detail {

void adviseLargeBlock(void* block, std::size_t size) noexcept {
#ifdef MADV_HUGEPAGE
  constexpr std::uintptr_t kPage = std::uintptr_t{2} << 20;
  if (size < 2 * kPage) return;
  const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(block) + kPage - 1) & ~(kPage - 1);
  const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(block) + size) & ~(kPage - 1);
  const int before = errno;
  ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
  errno = before;
#else
  static_cast<void>(block);
  static_cast<void>(size);
#endif
}

}  // namespace vomsg::detail
