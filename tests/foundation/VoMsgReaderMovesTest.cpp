// Moves of the two kinds of readers against a model of where they may go.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <climits>
#include <random>
#include <vector>

#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"
#include "vomsg/foundation/VoMsgFileReader.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace {

using vomsg::test::RememberingLog;
using vomsg::test::ScratchDirectory;

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
  }
}

TEST(VoMsgReaderMoves, MemoryReaderFollowsTheModel) {
  std::vector<unsigned char> block(kText.begin(), kText.end());
  VoMsgMemoryReader reader(block.data(), static_cast<unsigned>(block.size()));
  ASSERT_TRUE(reader.open());
  walk(reader, false);
  EXPECT_EQ(reader.getSize(), kText.size());
  reader.close();
  EXPECT_FALSE(reader.isOpen());
  EXPECT_EQ(reader.getOffset(), 0u);
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
}

TEST(VoMsgReaderMoves, EmptyData) {
  unsigned char byte = 'x';
  VoMsgMemoryReader memory(&byte, 0);
  ASSERT_TRUE(memory.open());
  EXPECT_EQ(memory.rseek(0, 0), -1);
  EXPECT_EQ(memory.rseek(0, 2), 0);
  EXPECT_EQ(memory.readBuffer(), 0);
  const ScratchDirectory dir;
  VoMsgFileReader file(dir.write("empty", "").c_str(), 0);
  ASSERT_TRUE(file.open());
  EXPECT_EQ(file.rseek(0, 0), 0);
  EXPECT_EQ(file.readBuffer(), 0);
  // One helper means the same on both.
  EXPECT_TRUE(vomsg::detail::moveTo(memory, 0));
  EXPECT_TRUE(vomsg::detail::moveTo(file, 0));
  EXPECT_FALSE(vomsg::detail::moveTo(memory, 1));
  EXPECT_FALSE(vomsg::detail::moveTo(file, 1));
}

TEST(VoMsgFileReader, OpensRegularFilesOnly) {
  RememberingLog log;
  const ScratchDirectory dir;
  VoMsgFileReader missing(dir.file("missing").c_str(), 0);
  EXPECT_FALSE(missing.open());
  EXPECT_EQ(log.count("Can not open file [" + dir.file("missing") + "]."), 1);
  EXPECT_EQ(log.debug.at(0).level, 1u);
  EXPECT_EQ(missing.getSize(), UINT_MAX);
  ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0600), 0);
  for (const std::string& path : {dir.path, dir.file("pipe"), std::string("/dev/null")}) {
    VoMsgFileReader reader(path.c_str(), 0);
    EXPECT_FALSE(reader.open()) << path;
    EXPECT_FALSE(reader.isOpen());
    EXPECT_EQ(reader.getSize(), UINT_MAX);
  }
  VoMsgFileReader nameless(nullptr, 0);
  EXPECT_FALSE(nameless.open());
}

TEST(VoMsgFileReader, ReopeningRewindsAndClosedFilesTellTheirSize) {
  const ScratchDirectory dir;
  VoMsgFileReader reader(dir.write("text", kText).c_str(), 4);
  EXPECT_EQ(reader.getSize(), kText.size());
  EXPECT_FALSE(reader.isOpen());
  EXPECT_EQ(reader.rseek(0, 0), -1);
  char out[3];
  EXPECT_EQ(reader.read(out, 3), 0u);
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(reader.open());
    ASSERT_EQ(reader.read(out, 3), 3u);
    EXPECT_EQ(std::string(out, 3), "012");
    EXPECT_TRUE(reader.open());  // already open: nothing moves
    EXPECT_EQ(reader.getOffset(), 3u);
    reader.close();
  }
  reader.unlink();
  EXPECT_EQ(dir.count(), 0u);
}

TEST(VoMsgFileReader, PositionsDoNotWrapInLargeFiles) {
  const ScratchDirectory dir;
  constexpr std::int64_t kLarge = (std::int64_t{1} << 32) + 5;
  const std::string path = dir.file("large");
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT, 0600);
  ASSERT_EQ(ftruncate(file, static_cast<off_t>(kLarge)), 0);
  ASSERT_EQ(pwrite(file, "tail!", 5, static_cast<off_t>(kLarge - 5)), 5);
  ::close(file);
  VoMsgFileReader reader(path.c_str(), 0);
  ASSERT_TRUE(reader.open());
  EXPECT_EQ(reader.getSize(), UINT_MAX);
  char out[8];
  if (sizeof(long) == 8) {
    EXPECT_EQ(reader.rseek(-5, 2), kLarge - 5);
  } else {
    EXPECT_EQ(reader.rseek(-5, 2), -1);  // the answer would not fit, so nothing moves
    EXPECT_EQ(reader.getOffset(), 0u);
    for (int i = 0; i < 2; ++i) ASSERT_TRUE(reader.seek(LONG_MAX));
    ASSERT_TRUE(reader.seek(2));
  }
  EXPECT_EQ(reader.getOffset(), UINT_MAX);
  EXPECT_EQ(std::string(out, reader.read(out, 8)), "tail!");
}

}  // namespace
