// Moves and copies of every reader against a model of where it may go.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <random>

#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgFileReader.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace {

using vomsg::detail::copyRange;
using vomsg::detail::moveTo;
using vomsg::test::ExactMemoryReader;
using vomsg::test::LimitedWriter;
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
