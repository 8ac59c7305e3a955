// The linker leads malloc and its kin, and open, of the library and the tests here (--wrap); operator new is replaced.
// What the C library or ICU allocates for itself is neither refused nor counted, so blocks that one of them made and
// the library frees are told apart by a set of addresses.
#include "tests/sweep/Shortage.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <unordered_set>

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
int __real_open(const char* path, int flags, ...);
}

namespace vomsg::test {
namespace {

constexpr long kNever = std::numeric_limits<long>::max();

struct Supply {
  long requests = 0;
  long failing = kNever;
  bool lasting = false;
  bool struck = false;

  bool refuse() {
    const long number = requests++;
    const bool refused = lasting ? number >= failing : number == failing;
    struck = struck || refused;
    return refused;
  }
};
Supply gSupplies[2];

template <class Type>
struct Uncounted {
  using value_type = Type;
  Uncounted() = default;
  template <class Other>
  explicit(false) Uncounted(const Uncounted<Other>&) {}
  Type* allocate(std::size_t n) { return static_cast<Type*>(__real_malloc(n * sizeof(Type))); }
  void deallocate(Type* block, std::size_t) { __real_free(block); }
  bool operator==(const Uncounted&) const { return true; }
};
using Blocks = std::unordered_set<void*, std::hash<void*>, std::equal_to<void*>, Uncounted<void*>>;

Blocks& blocks() {
  alignas(Blocks) static char place[sizeof(Blocks)];
  static Blocks* const all = new (place) Blocks;  // never destroyed: blocks are freed until the very end
  return *all;
}

Supply& supplyOf(Scarce what) { return gSupplies[what == Scarce::memory ? 0 : 1]; }

}  // namespace

Shortage::Shortage(Scarce what, long number, bool lasting) { supplyOf(what) = {0, number, lasting, false}; }
Shortage::~Shortage() {
  for (Supply& supply : gSupplies) supply = {};
}
bool Shortage::struck() const { return gSupplies[0].struck || gSupplies[1].struck; }

namespace {
Scarce gCounted;
}
Demand::Demand(Scarce what) {
  gCounted = what;
  supplyOf(what) = {};
}
Demand::~Demand() { supplyOf(gCounted) = {}; }
long Demand::count() const { return supplyOf(gCounted).requests; }

std::size_t blocksAlive() { return blocks().size(); }

}  // namespace vomsg::test

using vomsg::test::Scarce;

namespace {
bool refuseMemory() {
  if (!vomsg::test::supplyOf(Scarce::memory).refuse()) return false;
  errno = ENOMEM;
  return true;
}
void* noted(void* block) {
  if (block) vomsg::test::blocks().insert(block);
  return block;
}
}  // namespace

extern "C" {
void* __wrap_malloc(std::size_t size) { return refuseMemory() ? nullptr : noted(__real_malloc(size)); }
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return refuseMemory() ? nullptr : noted(__real_calloc(count, size));
}
void* __wrap_realloc(void* block, std::size_t size) {
  if (refuseMemory()) return nullptr;
  vomsg::test::blocks().erase(block);
  return noted(__real_realloc(block, size));
}
void __wrap_free(void* block) {
  vomsg::test::blocks().erase(block);
  __real_free(block);
}
char* __wrap_strdup(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  void* const copy = __wrap_malloc(size);
  return copy ? static_cast<char*>(std::memcpy(copy, text, size)) : nullptr;
}
int __wrap_open(const char* path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const int mode = va_arg(arguments, int);  // garbage where there is none, and then not looked at
  va_end(arguments);
  if (vomsg::test::supplyOf(Scarce::descriptors).refuse()) {
    errno = EMFILE;
    return -1;
  }
  return __real_open(path, flags, mode);
}
int __wrap_open64(const char* path, int flags, ...) __attribute__((alias("__wrap_open")));
}

void* operator new(std::size_t size) {
  void* const block = __wrap_malloc(size ? size : 1);
  return block ? block : throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return __wrap_malloc(size ? size : 1); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return __wrap_malloc(size ? size : 1); }
void operator delete(void* block) noexcept { __wrap_free(block); }
void operator delete[](void* block) noexcept { __wrap_free(block); }
void operator delete(void* block, std::size_t) noexcept { __wrap_free(block); }
void operator delete[](void* block, std::size_t) noexcept { __wrap_free(block); }
