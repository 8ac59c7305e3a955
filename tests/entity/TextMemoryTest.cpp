// A program of its own, because it counts what operator new gives out: whole copies of texts would be there.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "tests/support/MessageFixture.h"
#include "vomsg/foundation/VoMsgResourceManager.h"

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

std::string repeated(std::string_view unit, std::size_t size) {
  std::string text;
  text.reserve(size + unit.size());
  while (text.size() < size) text += unit;
  return text;
}

// What a text grows to is nowhere as a whole but in the resource that holds it.
TEST(TextMemory, TextsAreConvertedInPieces) {
  constexpr std::size_t kSize = 6'000'000;
  constexpr std::size_t kMegabyte = std::size_t{1} << 20;
  constexpr struct {
    const char* from;
    std::string_view line;  // in `from`
    std::string_view utf8;  // the same
  } kRows[] = {
      {"iso-8859-1", "\xE9\xE9\xE9\r\n", "\xC3\xA9\xC3\xA9\xC3\xA9\r\n"},
      {"iso-2022-jp", "\x1B$B$\"\x1B(B\r\n", "\xE3\x81\x82\r\n"},
      {"hz-gb-2312", "~{VP~}\r\n", "\xE4\xB8\xAD\r\n"},
      {"koi8-r", "\xC1\xC2\r\n", "\xD0\xB0\xD0\xB1\r\n"},
      {"utf-16le", std::string_view("\x2D\x4E\r\0\n\0", 6), "\xE4\xB8\xAD\r\n"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.from);
    std::string text = repeated(row.line, kSize);
    const std::string want = repeated(row.utf8, text.size() / row.line.size() * row.utf8.size());
    MessageFixture message("Content-Type: text/plain; charset=" + std::string(row.from) + "\r\n\r\n" + text,
                           Source::file);
    std::size_t before = gPeak = gHeld;
    int code = 0;
    const VoMsgResourceLocator* const converted = message->getTextContent(code, nullptr, "utf-8");
    EXPECT_LE(gPeak - before, kMegabyte);
    EXPECT_LE(VoMsgResourceManager::currentAllocateMemorySize(), VoMsgResourceManager::getTotalAllocateMemoryLimit());
    EXPECT_TRUE(bytesOf(converted) == want);

    const auto content = resourceOver(text);
    before = gPeak = gHeld;
    EXPECT_EQ(message->replaceTextContent(content.get(), row.from, kVoReplaceUseCharset), kVoSuccess);
    EXPECT_LE(gPeak - before, kMegabyte);
    EXPECT_TRUE(bytesOf(message->getTextContent(code, nullptr, "utf-8")) == want);
  }
}

}  // namespace
}  // namespace vomsg::test
