#include "vomsg/foundation/VoMsgBufferedReader.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include "tests/support/Tools.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgFileReader.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace {

using vomsg::test::WindowReader;

struct Line {
  std::string text;
  unsigned terminator;
  bool operator==(const Line&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Line& line) {
  return out << testing::PrintToString(line.text) << "/" << line.terminator;
}
using Lines = std::vector<Line>;

// The rule, one byte after the other: LF ends a line and belongs to it; after a CR every other byte ends it.
Lines slowLines(std::string_view data) {
  Lines lines;
  std::string text;
  bool cr = false;
  const auto end = [&](unsigned terminator) {
    lines.push_back({std::exchange(text, {}), terminator});
    cr = false;
  };
  for (const char c : data) {
    if (cr && c != '\n') end(1);
    text += c;
    if (c == '\n') end(cr ? 2 : 1);
    if (c == '\r') cr = true;
  }
  if (!text.empty()) end(cr ? 1 : 0);
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

Lines innerLines(VoMsgBufferedReader& reader) {
  Lines lines;
  Line line;
  while (vomsg::detail::readLine(reader, line.text, line.terminator)) lines.push_back(line);
  return lines;
}

// Every reader there is, over the same bytes.
std::vector<std::unique_ptr<VoMsgBufferedReader>> readersOf(std::vector<unsigned char>& block, std::string_view text,
                                                            const std::string& file) {
  block.assign(text.begin(), text.end());
  std::vector<std::unique_ptr<VoMsgBufferedReader>> readers;
  readers.push_back(std::make_unique<VoMsgMemoryReader>(block.data(), static_cast<unsigned>(block.size())));
  for (const unsigned window : {1u, 2u, 3u}) readers.push_back(std::make_unique<WindowReader>(text, window));
  if (!file.empty())
    for (const unsigned size : {1u, 3u, 0u}) readers.push_back(std::make_unique<VoMsgFileReader>(file.c_str(), size));
  return readers;
}

TEST(VoMsgBufferedReader, CutsEveryShortTextAsTheSlowRuleDoes) {
  constexpr std::string_view kAlphabet("a\r\n\0", 4);
  for (std::size_t length = 0; length <= 6; ++length) {
    for (std::size_t code = 0; code < std::size_t{1} << (2 * length); ++code) {
      std::string text;
      for (std::size_t i = 0; i < length; ++i) text += kAlphabet[code >> (2 * i) & 3];
      const Lines want = slowLines(text);
      std::vector<unsigned char> block;
      for (const auto& reader : readersOf(block, text, "")) {
        ASSERT_EQ(publicLines(*reader), want) << testing::PrintToString(text);
        reader->close();
        reader->open();
        ASSERT_EQ(innerLines(*reader), want) << testing::PrintToString(text);
      }
    }
  }
}

TEST(VoMsgBufferedReader, CutsLongMixedTextAlikeFromEverySource) {
  std::string text;
  unsigned state = 1;
  const auto draw = [&state](unsigned n) { return (state = state * 1664525u + 1013904223u) / 65536u % n; };
  for (int i = 0; i < 300; ++i) {
    text.append(draw(10) == 0 ? 40000 + draw(3000) : draw(700), static_cast<char>('a' + draw(26)));
    text += std::array{"\n", "\r", "\r\n", "\r\r\n"}[draw(4)];
  }
  const vomsg::test::ScratchDirectory dir;
  const std::string file = dir.write("text", text);
  const Lines want = slowLines(text);
  std::vector<unsigned char> block;
  for (const auto& reader : readersOf(block, text, file)) {
    ASSERT_TRUE(reader->open());
    EXPECT_TRUE(publicLines(*reader) == want);
    ASSERT_EQ(reader->rseek(0, 0), 0);
    std::uint64_t length = 0;
    unsigned terminator = 0;
    for (const Line& line : want) {
      ASSERT_TRUE(vomsg::detail::skipLine(*reader, length, terminator));
      ASSERT_EQ(length, line.text.size());
      ASSERT_EQ(terminator, line.terminator);
    }
    EXPECT_FALSE(vomsg::detail::skipLine(*reader, length, terminator));
  }
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
    std::vector<unsigned char> block(text.begin(), text.end());
    VoMsgMemoryReader memory(block.data(), static_cast<unsigned>(block.size()));
    WindowReader window(text, 100);
    unsigned capacity = 0;
    std::free(memory.readline(nullptr, capacity));
    EXPECT_EQ(capacity, row.fromMemory) << row.length;
    std::free(window.readline(nullptr, capacity));
    EXPECT_EQ(capacity, row.fromSmallBuffer) << row.length;
  }
}

TEST(VoMsgBufferedReader, ReusesTheBufferAndFreesItAtTheEnd) {
  unsigned char text[] = {'a', '\r', '\n', 'b'};
  VoMsgMemoryReader reader(text, 4);
  unsigned capacity = 40, terminator = 0;
  char* const given = static_cast<char*>(std::malloc(capacity));
  char* line = reader.readline(given, capacity, terminator);
  EXPECT_EQ(line, given);
  EXPECT_EQ(capacity, 40u);
  EXPECT_STREQ(line, "a\r\n");
  line = reader.readline(line, capacity);
  EXPECT_STREQ(line, "b");
  EXPECT_EQ(reader.readline(line, capacity, terminator), nullptr);
  EXPECT_EQ(capacity, 0u);
  EXPECT_EQ(reader.readline(), nullptr);
}

TEST(VoMsgBufferedReader, WithoutBufferReadsNothing) {
  VoMsgMemoryReader reader(nullptr, 12);
  unsigned capacity = 5;
  EXPECT_FALSE(reader.open());
  EXPECT_EQ(reader.readline(static_cast<char*>(std::malloc(5)), capacity), nullptr);
  EXPECT_EQ(capacity, 0u);
}

}  // namespace
