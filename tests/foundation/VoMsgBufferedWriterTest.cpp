// Copies into a writer, and the two writers there are.
#include "vomsg/foundation/VoMsgBufferedWriter.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

#include "tests/support/FileSizeLimit.h"
#include "tests/support/Inputs.h"
#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgFileWriter.h"
#include "vomsg/foundation/VoMsgMemBlock.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace {

using vomsg::detail::WriterAccess;
using vomsg::test::FileSizeLimit;
using vomsg::test::LimitedWriter;
using vomsg::test::readFile;
using vomsg::test::ScratchDirectory;
using vomsg::test::WindowReader;

std::string withLineEnds(const std::string& text, const char* lineEnd) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == 'a') out += 'a';
    if (text[i] == '\r' || (text[i] == '\n' && (i == 0 || text[i - 1] != '\r'))) out += lineEnd;
  }
  return out;
}

// A cut between CR and LF leaves a line that CR ends.
TEST(VoMsgBufferedWriter, CopiesEveryShortTextAsLines) {
  vomsg::test::forEveryString("a\r\n", 6, [](const std::string& text) {
    SCOPED_TRACE(testing::PrintToString(text));
    for (std::size_t n = 0; n <= text.size() + 1; ++n) {
      const std::string want = withLineEnds(text.substr(0, n), "\r\n");
      for (const unsigned window : {1u, 2u, 9u}) {
        WindowReader reader(text, window);
        LimitedWriter writer(SIZE_MAX, 3);
        ASSERT_EQ(writer.copyFromText(&reader, static_cast<unsigned>(n)), kVoSuccess);
        ASSERT_TRUE(writer.flush());
        ASSERT_EQ(writer.text, want) << " up to " << n;
        ASSERT_EQ(reader.getOffset(), std::min(n, text.size()));
      }
    }
    for (const char* const lineBreak : {"", static_cast<const char*>(nullptr)}) {
      WindowReader reader(text, 2);
      LimitedWriter writer;
      ASSERT_EQ(writer.copyFromText(&reader, lineBreak), kVoSuccess);
      ASSERT_TRUE(writer.flush());
      ASSERT_EQ(writer.text, withLineEnds(text, lineBreak ? "<br>" : "\r\n"));
    }
  });
}

TEST(VoMsgBufferedWriter, ReportsRefusalsAndNull) {
  const std::string text = "one\r\ntwo\r\nthree";
  for (std::size_t limit = 0; limit <= text.size(); ++limit) {
    const VoErrorCode want = limit < text.size() ? kVoWriteFailed : kVoSuccess;
    WindowReader readers[] = {{text, 4}, {text, 4}};
    LimitedWriter a(limit, 1), b(limit, 1);
    EXPECT_EQ(a.copyFrom(&readers[0]), want) << limit;
    EXPECT_EQ(b.copyFromText(&readers[1], 15u), want) << limit;
  }
  LimitedWriter writer;
  const vomsg::test::RememberingLog log;
  EXPECT_EQ(writer.copyFrom(nullptr), kVoBadArgument);
  EXPECT_EQ(log.count("copyFrom failed. (error code:81010008)"), 1);
  EXPECT_EQ(writer.copyFrom(nullptr, 1), kVoBadArgument);
  EXPECT_EQ(writer.copyFromText(nullptr, nullptr), kVoBadArgument);
  EXPECT_EQ(writer.copyFromText(nullptr, 1u), kVoBadArgument);
  EXPECT_TRUE(writer.write(nullptr, 0));
  VoMsgFileWriter closed("/nonexistent/file", 4);  // a full buffer that cannot be emptied
  EXPECT_TRUE(closed.write("abc", 3));
  EXPECT_FALSE(closed.write("def", 3));
  EXPECT_FALSE(closed.write("g", 1));
}

template <class Writer>
bool put(Writer&& writer, std::string_view text) {
  return writer.write(text.data(), static_cast<unsigned>(text.size()));
}

std::string bytesOf(std::size_t size) {
  std::mt19937 random(5);
  return vomsg::test::randomBytes(random, size);
}

TEST(VoMsgFileWriter, ReportsFailuresAndLogsThem) {
  vomsg::test::RememberingLog log;
  EXPECT_FALSE(VoMsgFileWriter("/nonexistent/file", 0).open());
  EXPECT_EQ(log.count("Can not open file [/nonexistent/file].(system error code = " + std::to_string(ENOENT) + ")"), 1);
  EXPECT_FALSE(VoMsgFileWriter(nullptr, 0).open());
  {
    const ScratchDirectory dir;
    const FileSizeLimit limit(0);
    VoMsgFileWriter full(dir.file("full").c_str(), 4);
    ASSERT_TRUE(full.open());
    EXPECT_FALSE(put(full, "123456"));
    EXPECT_EQ(log.count("Fail to write data to file. System error code is " + std::to_string(EFBIG)), 1);
    EXPECT_FALSE(full.flush());
    EXPECT_FALSE(full.close());
    EXPECT_TRUE(full.isOpen());
    EXPECT_FALSE(WriterAccess::writeThrough(full, "123456789", 9));
  }
  EXPECT_EQ(log.debug.back().level, 1u);
}

TEST(VoMsgFileWriter, ResumesWhereAPartialWriteStopped) {
  const ScratchDirectory dir;
  VoMsgFileWriter writer(dir.file("file").c_str(), 16);
  ASSERT_TRUE(writer.open());
  {
    const FileSizeLimit limit(10);
    EXPECT_FALSE(put(writer, "0123456789abcdef"));
  }
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
    const std::string piece = bytesOf(size);
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
    EXPECT_TRUE(put(VoMsgMemoryWriter(&block), bytesOf(size)));
    EXPECT_EQ(mine, std::vector<char>(5, 'm'));
    ASSERT_TRUE(block.owned);
    EXPECT_GT(block.capacity, block.length);
    EXPECT_EQ(std::string(block.data, block.length + 1), bytesOf(size) + '\0');
    char* const before = block.data;
    EXPECT_TRUE(put(VoMsgMemoryWriter(&block), "x"));  // now its own: written in place
    EXPECT_EQ(block.data, before);
    EXPECT_STREQ(block.data, "x");
    std::free(block.data);
  }
}

}  // namespace
