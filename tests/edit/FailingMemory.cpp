#include "tests/edit/FailingMemory.h"

#include <cstdlib>
#include <new>

#include "vomsg/foundation/VoMsgGuard.h"

namespace vomsg::test {
long gUntilFailure = -1;
}

using vomsg::test::gUntilFailure;

__attribute__((noinline)) void* operator new(std::size_t size) {
  if (gUntilFailure == 0 || (gUntilFailure > 0 && gUntilFailure-- == 0)) throw std::bad_alloc();
  void* const block = std::malloc(size);
  return block ? block : throw std::bad_alloc();
}
__attribute__((noinline)) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return vomsg::detail::guardedOr<void*>(nullptr, [size] { return operator new(size); });
}
__attribute__((noinline)) void operator delete(void* block) noexcept { std::free(block); }
__attribute__((noinline)) void operator delete(void* block, std::size_t) noexcept { std::free(block); }
