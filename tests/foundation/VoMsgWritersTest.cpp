// The file writer and the memory writer.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
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
using vomsg::test::ScratchDirectory;

template <class Writer>
bool put(Writer&& writer, std::string_view text) {
  return writer.write(text.data(), static_cast<unsigned>(text.size()));
}

std::string patternOf(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 31 >> 3);
  return text;
}

TEST(VoMsgFileWriter, ReportsFailuresAndLogsThem) {
  vomsg::test::RememberingLog log;
  EXPECT_FALSE(VoMsgFileWriter("/nonexistent/file", 0).open());
  EXPECT_EQ(log.count("Can not open file [/nonexistent/file].(system error code = " + std::to_string(ENOENT) + ")"), 1);
  EXPECT_FALSE(VoMsgFileWriter(nullptr, 0).open());
  {
    VoMsgFileWriter full("/dev/full", 4);
    ASSERT_TRUE(full.open());
    EXPECT_FALSE(put(full, "123456"));
    EXPECT_EQ(log.count("Fail to write data to file. System error code is " + std::to_string(ENOSPC)), 1);
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
  EXPECT_TRUE(writer.open());  // already open: nothing is truncated
  EXPECT_TRUE(writer.close());
  EXPECT_EQ(readFile(dir.file("file")), "0123456789abcdef");
}

TEST(VoMsgWriters, SmallAndLargeStretchesKeepTheirOrder) {
  const ScratchDirectory dir;
  std::string want;
  VoMsgMemoryWriter memory;
  VoMsgFileWriter file(dir.file("file").c_str(), 64);
  ASSERT_TRUE(file.open());
  WriterAccess::expect(file, 1000);
  WriterAccess::expect(memory, 130000);
  const char* const reserved = memory.getData();
  for (const std::size_t size : {0u, 1u, 63u, 64u, 65u, 32767u, 10u, 32769u, 20000u, 3u}) {
    const std::string piece = patternOf(size);
    want += piece;
    for (VoMsgBufferedWriter* const writer :
         {static_cast<VoMsgBufferedWriter*>(&memory), static_cast<VoMsgBufferedWriter*>(&file)})
      EXPECT_TRUE(size % 2 == 0 ? put(*writer, piece) : WriterAccess::writeThrough(*writer, piece.data(), size));
    if (size != 64 && size != 3) continue;
    ASSERT_TRUE(memory.flush());
    ASSERT_TRUE(std::string(memory.getData(), memory.getLength() + 1) == want + '\0');
  }
  EXPECT_EQ(memory.getData(), reserved);  // announced, so allocated once
  EXPECT_TRUE(file.close());
  EXPECT_TRUE(readFile(dir.file("file")) == want);

  memory.clearString();
  EXPECT_EQ(memory.getData(), nullptr);
  EXPECT_TRUE(put(memory, "again"));
  // What a size cannot say is refused, and a hint of it is ignored.
  for (const std::uint64_t size : {0xFFFFFFFFull, ~0ull}) {
    EXPECT_FALSE(WriterAccess::writeThrough(memory, want.data(), size));
    WriterAccess::expect(memory, size);
  }
  EXPECT_TRUE(put(memory, "y") && memory.flush());
  EXPECT_STREQ(memory.getData(), "againy");
}

TEST(VoMsgMemoryWriter, LeavesABlockThatIsNotTheRecordsOwn) {
  for (const std::size_t size : {0u, 3u, 5u, 40000u}) {
    std::vector<char> mine(5, 'm');
    VoMsgMemBlock block{mine.data(), 5, 0, false};
    EXPECT_TRUE(put(VoMsgMemoryWriter(&block), patternOf(size)));
    EXPECT_EQ(mine, std::vector<char>(5, 'm'));
    ASSERT_TRUE(block.owned);
    EXPECT_GT(block.capacity, block.length);
    EXPECT_EQ(std::string(block.data, block.length + 1), patternOf(size) + '\0');
    char* const before = block.data;
    EXPECT_TRUE(put(VoMsgMemoryWriter(&block), "x"));  // now its own: written in place
    EXPECT_EQ(block.data, before);
    EXPECT_STREQ(block.data, "x");
    std::free(block.data);
  }
}

}  // namespace
