#include "vomsg/foundation/VoMsgBufferedReader.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include "tests/support/Inputs.h"
#include "tests/support/Tools.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgFileReader.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace {

using vomsg::test::ExactMemoryReader;
using vomsg::test::WindowReader;

struct Line {
  std::string text;
  unsigned terminator;
  bool operator==(const Line&) const = default;
};
using Lines = std::vector<Line>;

Lines slowLines(const std::string& text) {
  Lines lines;
  for (std::size_t at = 0; at < text.size(); at += lines.back().text.size()) {
    const std::size_t end = std::min(text.find_first_of("\r\n", at), text.size());
    const unsigned terminator = end == text.size() ? 0 : text.compare(end, 2, "\r\n") == 0 ? 2 : 1;
    lines.push_back({text.substr(at, end - at + terminator), terminator});
  }
  return lines;
}

Lines publicLines(VoMsgBufferedReader& reader) {
  Lines lines;
  char* line = nullptr;
  unsigned capacity = 0, terminator = 9;
  unsigned before = reader.getOffset();
  while ((line = reader.readline(line, capacity, terminator)) != nullptr) {
    const unsigned length = reader.getOffset() - before;  // a NUL does not end a line
    before += length;
    EXPECT_LT(length, capacity);
    EXPECT_EQ(line[length], '\0');
    lines.push_back({std::string(line, length), terminator});
  }
  EXPECT_EQ(capacity, 0u);
  EXPECT_EQ(terminator, 0u);
  return lines;
}

// The three ways to take lines, from the start each.
void check(VoMsgBufferedReader& reader, const Lines& want) {
  ASSERT_TRUE(reader.open());
  ASSERT_TRUE(publicLines(reader) == want);
  for (const bool skips : {false, true}) {
    reader.close();
    ASSERT_TRUE(reader.open());
    Line line{};
    std::uint64_t length = 0;
    for (const Line& wanted : want) {
      if (skips)
        ASSERT_TRUE(vomsg::detail::skipLine(reader, length, line.terminator));
      else
        ASSERT_TRUE(vomsg::detail::readLine(reader, line.text, line.terminator));
      ASSERT_TRUE(skips ? length == wanted.text.size() : line.text == wanted.text);
      ASSERT_EQ(line.terminator, wanted.terminator);
    }
    ASSERT_FALSE(vomsg::detail::skipLine(reader, length, line.terminator));
    ASSERT_FALSE(vomsg::detail::readLine(reader, line.text, line.terminator));
  }
}

void checkAll(const std::string& text, const std::string& file) {
  SCOPED_TRACE(testing::PrintToString(text.substr(0, 100)));
  const Lines want = slowLines(text);
  ExactMemoryReader exact(text);
  check(exact, want);
  for (const unsigned size : {1u, 2u, 3u}) {
    WindowReader window(text, size);
    check(window, want);
    if (file.empty()) continue;
    VoMsgFileReader fromFile(file.c_str(), size == 2 ? 0 : size);
    check(fromFile, want);
  }
}

TEST(VoMsgBufferedReader, CutsEveryShortTextAsTheSlowRuleDoes) {
  vomsg::test::forEveryString({"a\r\n\0", 4}, 6, [](const std::string& text) { checkAll(text, ""); });
}

TEST(VoMsgBufferedReader, CutsLongLinesAlikeFromEverySource) {
  std::string text;
  for (const std::size_t length : {127u, 128u, 129u, 384u, 20000u, 40000u})
    for (const char* end : {"\n", "\r", "\r\n"}) text.append(length, static_cast<char>('a' + length % 7)).append(end);
  const vomsg::test::ScratchDirectory dir;
  checkAll(text, dir.write("text", text));
}

TEST(VoMsgBufferedReader, ReportsTheStatedCapacities) {
  struct Row {
    std::size_t length;  // of the one line, without a terminator
    unsigned fromMemory;
    unsigned fromSmallBuffer;  // of 100 bytes
  };
  constexpr Row kRows[] = {{1, 256, 256},   {255, 256, 256}, {256, 512, 512},
                           {512, 513, 768}, {513, 769, 768}, {100000, 100256, 100096}};
  for (const Row& row : kRows) {
    const std::string text(row.length, 'x');
    ExactMemoryReader memory(text);
    WindowReader window(text, 100);
    unsigned capacity = 0;
    std::free(memory.readline(nullptr, capacity));
    EXPECT_EQ(capacity, row.fromMemory) << row.length;
    std::free(window.readline(nullptr, capacity));
    EXPECT_EQ(capacity, row.fromSmallBuffer) << row.length;
  }
}

TEST(VoMsgBufferedReader, ReusesTheBufferAndFreesItAtTheEnd) {
  ExactMemoryReader reader("a\r\nb");
  unsigned capacity = 40;
  char* const given = static_cast<char*>(std::malloc(capacity));
  char* line = reader.readline(given, capacity);
  EXPECT_EQ(line, given);
  EXPECT_EQ(capacity, 40u);
  EXPECT_STREQ(line, "a\r\n");
  EXPECT_STREQ(line = reader.readline(line, capacity), "b");
  EXPECT_EQ(reader.readline(line, capacity), nullptr);
  EXPECT_EQ(capacity, 0u);
  EXPECT_EQ(reader.readline(), nullptr);
  VoMsgMemoryReader nothing(nullptr, 12);
  EXPECT_FALSE(nothing.open());
  EXPECT_EQ(nothing.readline(static_cast<char*>(std::malloc(capacity = 5)), capacity), nullptr);
  EXPECT_EQ(capacity, 0u);
}

}  // namespace
