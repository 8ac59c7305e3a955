// A program of its own, because it counts what operator new gives out.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <new>

#include "tests/tnef/HostileStreams.h"
#include "vomsg/entity/VoMsgEntityIterator.h"

namespace {
std::size_t gHeld = 0;
std::size_t gPeak = 0;
}  // namespace

__attribute__((noinline)) void* operator new(std::size_t size) {
  void* const block = std::malloc(size);
  if (!block) throw std::bad_alloc();
  gHeld += malloc_usable_size(block);
  if (gHeld > gPeak) gPeak = gHeld;
  return block;
}
__attribute__((noinline)) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (...) {
    return nullptr;
  }
}
__attribute__((noinline)) void operator delete(void* block) noexcept {
  if (block) gHeld -= malloc_usable_size(block);
  std::free(block);
}
__attribute__((noinline)) void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace vomsg::test {
namespace {

TEST(TnefMemory, StaysInProportionToTheStream) {
  for (const HostileShape& shape : kHostileShapes) {
    SCOPED_TRACE(shape.name);
    unsigned pieces = 1000;
    while (shape.make(pieces).size() < 2000000) pieces *= 2;
    const std::string bytes = shape.make(pieces);
    VoMsgTnefMessage message;
    gPeak = gHeld;
    const std::size_t before = gHeld;
    const VoErrorCode code = message.readFrom(new VoMsgMemoryResource(
        const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()), nullptr, nullptr));
    EXPECT_EQ(codeText(code), codeText(shape.code));
    EXPECT_LE(gPeak - before, 12 * bytes.size() + (1 << 20));
    std::printf("%-40s %4.1f bytes for each of the stream\n", shape.name,
                static_cast<double>(gPeak - before) / static_cast<double>(bytes.size()));
    const std::size_t read = gHeld;
    VoMsgEntityIterator walk(&message);
    for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
      if (!entity->getContentType() || entity->getFileName("utf-8") == bytes.data()) FAIL();
    std::printf("%-40s %4.1f more once all names were asked for\n", "",
                static_cast<double>(gHeld - read) / static_cast<double>(bytes.size()));
    VoMsgMemoryResource target(0, nullptr, nullptr);
    EXPECT_EQ(message.writeTo(&target), kVoSuccess);
    EXPECT_EQ(bytesOf(target), bytes);
  }
}

}  // namespace
}  // namespace vomsg::test
