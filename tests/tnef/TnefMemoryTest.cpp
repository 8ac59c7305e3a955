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

void* take(std::size_t size) {
  void* const block = std::malloc(size);
  gHeld += block ? malloc_usable_size(block) : 0;
  gPeak = std::max(gPeak, gHeld);
  return block;
}

}  // namespace

__attribute__((noinline)) void* operator new(std::size_t size) {
  void* const block = take(size);
  if (!block) throw std::bad_alloc();
  return block;
}
__attribute__((noinline)) void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
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
    const std::string bytes = shape.make(piecesFor(shape, 2000000));
    const auto perByte = [&](std::size_t n) { return static_cast<double>(n) / static_cast<double>(bytes.size()); };
    VoMsgTnefMessage message;
    gPeak = gHeld;
    const std::size_t before = gHeld;
    EXPECT_EQ(codeText(message.readFrom(inPlace(bytes))), codeText(shape.code));
    // A stream of 24 bytes is two entities, each of which remembers what lies around it.
    EXPECT_LE(gPeak - before, 13 * bytes.size() + (1 << 20));
    const std::size_t read = gHeld;
    std::printf("%-40s %4.1f bytes for each of the stream", shape.name, perByte(gPeak - before));
    VoMsgEntityIterator walk(&message);
    for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
      if (!entity->getContentType() || entity->getFileName("utf-8") == bytes.data()) FAIL();
    std::printf(", %4.1f more once all names were asked for\n", perByte(gHeld - read));
    EXPECT_EQ(written(message), bytes);
  }
}

}  // namespace
}  // namespace vomsg::test
