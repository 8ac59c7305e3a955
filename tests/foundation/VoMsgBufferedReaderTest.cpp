// Lines, moves and copies of every reader there is, against models of what they should be.
#include "vomsg/foundation/VoMsgBufferedReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <random>
#include <vector>

#include "tests/support/Inputs.h"
#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgFileReader.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgRangeResource.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace {

using vomsg::detail::copyRange;
using vomsg::detail::moveTo;
using vomsg::test::ExactMemoryReader;
using vomsg::test::LimitedWriter;
using vomsg::test::ScratchDirectory;
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
  const ScratchDirectory dir;
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

const std::string kText = "0123456789abcdefghijklmnopqrstuvwxyz";
const long kSize = static_cast<long>(kText.size());

// Where a move leads, or -1 when it is refused. Exactly the end is open to a memory reader by whence 2 alone.
long target(long at, long offset, int whence, bool file) {
  const long to = whence == 0 ? offset : whence == 1 ? at + offset : kSize + offset;
  if (to < 0 || to > kSize || (whence == 2 && offset > 0)) return -1;
  return to == kSize && whence != 2 && !file ? -1 : to;
}

void walk(VoMsgBufferedReader& reader, bool file) {
  std::minstd_rand random(7);
  const auto draw = [&random](long n) { return static_cast<long>(random() % static_cast<unsigned long>(n)); };
  long at = 0;
  for (int step = 0; step < 20000; ++step) {
    const bool far = draw(10) == 0;
    const long offset = far ? (draw(2) ? LONG_MAX - 3 : LONG_MIN + 3) : draw(2 * kSize + 6) - kSize - 3;
    const int whence = static_cast<int>(draw(5)) - 1;
    const bool known = whence >= 0 && whence <= 2;
    const long to = !known ? at : far ? -1 : target(at, offset, whence, file);
    if (whence == 1 && draw(2) == 0)
      ASSERT_EQ(reader.seek(offset), to >= 0) << at << " by " << offset;
    else
      ASSERT_EQ(reader.rseek(offset, whence), to) << at << " by " << offset << " from " << whence;
    if (to >= 0) at = to;
    if (draw(4) == 0) {
      EXPECT_EQ(reader.ungetChar(), !file || at > 0);
      at -= at > 0;
    }
    ASSERT_EQ(reader.getOffset(), static_cast<unsigned>(at));
    char bytes[8];
    const auto want = kText.substr(static_cast<std::size_t>(at), static_cast<std::size_t>(draw(8)));
    ASSERT_EQ(std::string(bytes, reader.read(bytes, static_cast<unsigned>(want.size()))), want);
    at += static_cast<long>(want.size());

    // What the library itself uses means the same on every reader.
    const auto place = static_cast<std::size_t>(draw(kSize + 3)), length = static_cast<std::size_t>(draw(kSize + 3));
    ASSERT_EQ(moveTo(reader, place), place <= kText.size());
    if (place <= kText.size()) at = static_cast<long>(place);
    ASSERT_EQ(reader.getOffset(), static_cast<unsigned>(at));
    if (draw(4) != 0) continue;
    LimitedWriter writer(SIZE_MAX, 4);
    const bool inside = length == 0 || place + length <= kText.size();
    const bool fromHere = place <= kText.size() && draw(2) == 0;
    ASSERT_EQ(
        fromHere ? writer.copyFrom(&reader, static_cast<unsigned>(length)) : copyRange(reader, writer, place, length),
        inside ? kVoSuccess : kVoReadFailed);
    ASSERT_TRUE(writer.flush());
    ASSERT_EQ(writer.text, place <= kText.size() ? kText.substr(place, length) : "");
    at = static_cast<long>(reader.getOffset());
  }
  EXPECT_EQ(reader.getSize(), kText.size());
  LimitedWriter all, full(9, 4);
  EXPECT_TRUE(moveTo(reader, 1) && all.copyFrom(&reader) == kVoSuccess);
  EXPECT_EQ(all.text, kText.substr(1));
  EXPECT_EQ(copyRange(reader, full, 0, 20), kVoWriteFailed);
  EXPECT_EQ(copyRange(reader, full, ~std::uint64_t{0}, 1), kVoReadFailed);
  EXPECT_FALSE(moveTo(reader, std::uint64_t{1} << 32));
}

TEST(VoMsgReaderMoves, MemoryReaderFollowsTheModel) {
  ExactMemoryReader reader(kText), empty("");
  walk(reader, false);
  reader.close();
  EXPECT_FALSE(reader.isOpen());
  EXPECT_EQ(reader.getOffset(), 0u);
  EXPECT_EQ(empty.rseek(0, 0), -1);
  EXPECT_EQ(empty.rseek(0, 2), 0);
  EXPECT_EQ(empty.readBuffer(), 0);
  EXPECT_TRUE(moveTo(empty, 0));
  EXPECT_FALSE(moveTo(empty, 1));
}

// The bytes around the range are never seen.
TEST(VoMsgReaderMoves, RangeOfAFileFollowsTheModel) {
  const ScratchDirectory dir;
  const std::string path = dir.write("text", "before" + kText + "behind");
  const VoObjectStub<VoMsgResourceLocator> whole(new VoMsgFileResource(path.c_str(), nullptr, nullptr));
  const vomsg::detail::RangeResource range(whole, {}, 6, static_cast<std::uint32_t>(kText.size()));
  const std::unique_ptr<VoMsgBufferedReader> reader(range.getInputStream(VoMsgResourceLocator::dataPart));
  ASSERT_TRUE(reader);
  walk(*reader, true);
  for (const auto& [offset, whence] : {std::pair{kSize + 1, 0}, {-1L, 0}, {-kSize - 1, 2}, {1L, 2}})
    EXPECT_EQ(reader->rseek(offset, whence), -1) << offset << ' ' << whence;
  EXPECT_EQ(reader->rseek(-kSize, 2), 0);
  EXPECT_FALSE(reader->seek(-1));
  EXPECT_TRUE(reader->seek(kSize));
  EXPECT_FALSE(reader->seek(1));
  reader->close();
  EXPECT_TRUE(reader->open());
  EXPECT_EQ(reader->getOffset(), 0u);
}

TEST(VoMsgReaderMoves, FileReaderFollowsTheModelWithAnyBuffer) {
  const ScratchDirectory dir;
  const std::string path = dir.write("text", kText);
  for (const unsigned buffer : {1u, 2u, 7u, 36u, 0u}) {
    SCOPED_TRACE(buffer);
    VoMsgFileReader reader(path.c_str(), buffer);
    ASSERT_TRUE(reader.open());
    walk(reader, true);
  }
  VoMsgFileReader empty(dir.write("empty", "").c_str(), 0);
  ASSERT_TRUE(empty.open());
  EXPECT_EQ(empty.rseek(0, 0), 0);
  EXPECT_EQ(empty.readBuffer(), 0);
  EXPECT_FALSE(moveTo(empty, 1));
}

TEST(VoMsgFileReader, OpensRegularFilesOnly) {
  vomsg::test::RememberingLog log;
  const ScratchDirectory dir;
  ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0600), 0);
  for (const std::string& path : {dir.file("missing"), dir.path, dir.file("pipe"), std::string("/dev/null")}) {
    VoMsgFileReader reader(path.c_str(), 0);
    EXPECT_FALSE(reader.open()) << path;
    EXPECT_FALSE(reader.isOpen());
    EXPECT_EQ(reader.getSize(), UINT_MAX);
  }
  EXPECT_EQ(log.count("Can not open file [" + dir.file("missing") + "]."), 2);  // getSize tries as well
  EXPECT_EQ(log.debug.at(0).level, 1u);
  EXPECT_FALSE(VoMsgFileReader(nullptr, 0).open());
}

TEST(VoMsgFileReader, ClosedOnesTellTheirSizeAlone) {
  const ScratchDirectory dir;
  VoMsgFileReader reader(dir.write("text", kText).c_str(), 4);
  EXPECT_EQ(reader.getSize(), kText.size());
  EXPECT_FALSE(reader.isOpen());
  EXPECT_EQ(reader.rseek(0, 0), -1);
  char out[3];
  EXPECT_EQ(reader.read(out, 3), 0u);
  ASSERT_TRUE(reader.open() && reader.read(out, 3) == 3 && reader.open());  // already open: nothing moves
  EXPECT_EQ(reader.getOffset(), 3u);
  reader.unlink();
  EXPECT_EQ(dir.count(), 0u);
}

TEST(VoMsgFileReader, PositionsDoNotWrapInLargeFiles) {
  const ScratchDirectory dir;
  constexpr std::int64_t kLarge = (std::int64_t{1} << 32) + 5;
  const std::string path = dir.file("large");
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT, 0600);
  ASSERT_EQ(pwrite(file, "tail!", 5, static_cast<off_t>(kLarge - 5)), 5);
  ::close(file);
  VoMsgFileReader reader(path.c_str(), 0);
  ASSERT_TRUE(reader.open());
  EXPECT_EQ(reader.getSize(), UINT_MAX);
  if (sizeof(long) == 8) {
    EXPECT_EQ(reader.rseek(-5, 2), kLarge - 5);
  } else {
    EXPECT_EQ(reader.rseek(-5, 2), -1);  // the answer would not fit, so nothing moves
    EXPECT_EQ(reader.getOffset(), 0u);
    for (int i = 0; i < 2; ++i) ASSERT_TRUE(reader.seek(LONG_MAX));
    ASSERT_TRUE(reader.seek(2));
  }
  EXPECT_EQ(reader.getOffset(), UINT_MAX);
  char out[8];
  EXPECT_EQ(std::string(out, reader.read(out, 8)), "tail!");
}

}  // namespace
