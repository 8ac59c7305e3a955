// The file writer and the memory writer.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <vector>

#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"
#include "vomsg/foundation/VoMsgFileWriter.h"
#include "vomsg/foundation/VoMsgMemBlock.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace {

using vomsg::detail::WriterAccess;
using vomsg::test::readFile;
using vomsg::test::RememberingLog;
using vomsg::test::ScratchDirectory;

bool put(VoMsgBufferedWriter& writer, std::string_view text) {
  return writer.write(text.data(), static_cast<unsigned>(text.size()));
}

std::string patternOf(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 31 >> 3);
  return text;
}

mode_t modeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 0777;
}

TEST(VoMsgFileWriter, CreatesTruncatesAndFlushesAtTheEnd) {
  const ScratchDirectory dir;
  const std::string path = dir.write("file", "a longer old content");
  {
    VoMsgFileWriter writer(path.c_str(), 4);
    EXPECT_FALSE(writer.isOpen());
    ASSERT_TRUE(writer.open());
    EXPECT_EQ(readFile(path), "");
    EXPECT_TRUE(put(writer, "123456"));
    EXPECT_EQ(readFile(path), "1234");
    EXPECT_TRUE(writer.open());  // already open: nothing is truncated
  }
  EXPECT_EQ(readFile(path), "123456");
}

TEST(VoMsgFileWriter, CreatesExclusivelyOrNotAtAll) {
  const ScratchDirectory dir;
  const std::string taken = dir.write("taken", "keep");
  ASSERT_EQ(symlink(taken.c_str(), dir.file("link").c_str()), 0);
  using Creation = VoMsgFileWriter::Creation;
  struct Row {
    const char* name;
    Creation creation;
    bool opens;
  } const rows[] = {{"taken", Creation::exclusive, false}, {"link", Creation::exclusive, false},
                    {"new", Creation::existing, false},    {"link", Creation::existing, false},
                    {"new", Creation::exclusive, true},    {"new", Creation::existing, true},
                    {"common", Creation::shared, true},    {"common", Creation::shared, true}};
  const mode_t mask = umask(0);
  for (const Row& row : rows) {
    VoMsgFileWriter writer(dir.file(row.name).c_str(), 0);
    writer.setCreation(row.creation);
    EXPECT_EQ(writer.open(), row.opens) << row.name;
  }
  umask(mask);
  EXPECT_EQ(readFile(taken), "keep");
  EXPECT_EQ(modeOf(dir.file("new")), 0600u);
  EXPECT_EQ(modeOf(dir.file("common")), 0644u);
}

TEST(VoMsgFileWriter, ReportsFailuresAndLogsThem) {
  RememberingLog log;
  VoMsgFileWriter nowhere("/nonexistent/file", 0);
  EXPECT_FALSE(nowhere.open());
  EXPECT_EQ(log.count("Can not open file [/nonexistent/file].(system error code = " + std::to_string(ENOENT) + ")"), 1);
  VoMsgFileWriter nameless(nullptr, 0);
  EXPECT_FALSE(nameless.open());
  const std::string refusal = "Fail to write data to file. System error code is " + std::to_string(ENOSPC);
  {
    VoMsgFileWriter full("/dev/full", 4);
    ASSERT_TRUE(full.open());
    EXPECT_FALSE(put(full, "123456"));
    EXPECT_EQ(log.count(refusal), 1);
    EXPECT_FALSE(full.flush());
    EXPECT_FALSE(full.close());
    EXPECT_TRUE(full.isOpen());
    EXPECT_FALSE(WriterAccess::writeThrough(full, "123456789", 9));
  }
  EXPECT_EQ(log.debug.back().level, 1u);
}

TEST(VoMsgFileWriter, ResumesWhereAPartialWriteStopped) {
  const ScratchDirectory dir;
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit usual;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
  const rlimit tight{10, usual.rlim_max};
  VoMsgFileWriter writer(dir.file("file").c_str(), 16);
  ASSERT_TRUE(writer.open());
  setrlimit(RLIMIT_FSIZE, &tight);
  EXPECT_FALSE(put(writer, "0123456789abcdef"));
  setrlimit(RLIMIT_FSIZE, &usual);
  std::signal(SIGXFSZ, before);
  EXPECT_TRUE(writer.close());
  EXPECT_EQ(readFile(dir.file("file")), "0123456789abcdef");
}

TEST(VoMsgMemoryWriter, CollectsAndEndsWithNul) {
  VoMsgMemoryWriter writer;
  EXPECT_EQ(writer.getData(), nullptr);
  std::string want;
  for (std::size_t size = 0; size < 100000; size = size * 3 + 1) {
    const std::string piece = patternOf(size);
    want += piece;
    ASSERT_TRUE(put(writer, piece));
    ASSERT_TRUE(writer.flush());
    ASSERT_EQ(std::string(writer.getData(), writer.getLength() + 1), want + '\0');
  }
  writer.clearString();
  EXPECT_EQ(writer.getData(), nullptr);
  EXPECT_EQ(writer.getLength(), 0u);
  EXPECT_TRUE(put(writer, "again") && writer.flush());
  EXPECT_STREQ(writer.getData(), "again");
}

TEST(VoMsgMemoryWriter, LeavesABlockThatIsNotTheRecordsOwn) {
  for (const std::size_t size : {0u, 3u, 5u, 40000u}) {
    std::vector<char> mine(5, 'm');
    VoMsgMemBlock block{mine.data(), 5, 0, false};
    const std::string text = patternOf(size);
    {
      VoMsgMemoryWriter writer(&block);
      EXPECT_TRUE(put(writer, text));
    }
    EXPECT_EQ(mine, std::vector<char>(5, 'm'));
    ASSERT_TRUE(block.owned);
    EXPECT_GT(block.capacity, block.length);
    EXPECT_EQ(std::string(block.data, block.length + 1), text + '\0');
    char* const before = block.data;
    {
      VoMsgMemoryWriter writer(&block);  // now its own: written in place
      EXPECT_TRUE(put(writer, "x"));
    }
    EXPECT_EQ(block.data, before);
    EXPECT_STREQ(block.data, "x");
    std::free(block.data);
  }
}

TEST(WriterAccess, LargeAndSmallStretchesKeepTheirOrder) {
  const ScratchDirectory dir;
  const std::string path = dir.file("file");
  std::string want;
  VoMsgMemBlock block;
  {
    VoMsgMemoryWriter memory(&block);
    VoMsgFileWriter file(path.c_str(), 64);
    ASSERT_TRUE(file.open());
    WriterAccess::expect(file, 1000);
    WriterAccess::expect(memory, 90000);
    const char* const reserved = block.data;
    for (const std::size_t size : {0u, 1u, 63u, 64u, 65u, 32767u, 32768u, 10u, 20000u}) {
      const std::string piece = patternOf(size);
      want += piece;
      EXPECT_TRUE(WriterAccess::writeThrough(memory, piece.data(), size));
      EXPECT_TRUE(WriterAccess::writeThrough(file, piece.data(), size));
    }
    EXPECT_TRUE(memory.flush());
    EXPECT_EQ(block.data, reserved);  // announced, so allocated once
    EXPECT_EQ(block.capacity, 90017u);
  }
  EXPECT_TRUE(std::string(block.data, block.length) == want);
  EXPECT_TRUE(readFile(path) == want);
  std::free(block.data);
}

TEST(WriterAccess, RefusesWhatASizeCannotSay) {
  VoMsgMemoryWriter writer;
  const std::string piece(100000, 'x');
  ASSERT_TRUE(WriterAccess::writeThrough(writer, piece.data(), piece.size()));
  for (const std::uint64_t size : {0xFFFFFFFFull, ~0ull}) {
    EXPECT_FALSE(WriterAccess::writeThrough(writer, piece.data(), size));
    WriterAccess::expect(writer, size);  // a hint that cannot be followed changes nothing
  }
  EXPECT_TRUE(put(writer, "y") && writer.flush());
  EXPECT_EQ(writer.getData(), piece + "y");
}

}  // namespace
