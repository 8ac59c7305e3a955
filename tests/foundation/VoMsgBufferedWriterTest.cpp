#include "vomsg/foundation/VoMsgBufferedWriter.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgFileWriter.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"

namespace {

using vomsg::test::LimitedWriter;
using vomsg::test::WindowReader;

// The copy of at most `n` bytes as lines, one line after the other, moving back by what was too much.
std::string slowText(std::string_view text, std::size_t n, std::string_view lineEnd, std::size_t& at) {
  std::string out;
  at = 0;
  for (std::size_t remaining = n; remaining > 0 && at < text.size();) {
    std::size_t end = at;
    while (end < text.size() && text[end] != '\r' && text[end] != '\n') ++end;
    std::size_t terminator = end == text.size() ? 0 : text.substr(end, 2) == "\r\n" ? 2 : 1;
    std::size_t length = end - at + terminator;
    if (length > remaining) {
      const std::size_t excess = length - remaining;
      terminator = excess >= terminator ? 0 : terminator - excess;
      length = remaining;
    }
    out += text.substr(at, length - terminator);
    if (terminator > 0) out += lineEnd;
    at += length;
    remaining -= length;
  }
  return out;
}

TEST(VoMsgBufferedWriter, CopiesEveryShortTextAsLines) {
  constexpr char kAlphabet[] = {'a', '\r', '\n'};
  for (std::size_t code = 0; code < 729; ++code) {
    std::string text;
    for (std::size_t rest = code + 729; rest > 1; rest /= 3) text += kAlphabet[rest % 3];
    std::size_t at = 0;
    for (std::size_t n = 0; n <= text.size() + 1; ++n) {
      for (const unsigned window : {1u, 2u, 9u}) {
        WindowReader reader(text, window);
        LimitedWriter writer(SIZE_MAX, 3);
        ASSERT_EQ(writer.copyFromText(&reader, static_cast<unsigned>(n)), kVoSuccess);
        ASSERT_TRUE(writer.flush());
        ASSERT_EQ(writer.text, slowText(text, n, "\r\n", at)) << testing::PrintToString(text) << " up to " << n;
        ASSERT_EQ(reader.getOffset(), at) << testing::PrintToString(text) << " up to " << n;
      }
    }
    for (const char* const lineBreak : {"", static_cast<const char*>(nullptr)}) {
      WindowReader reader(text, 2);
      LimitedWriter writer;
      ASSERT_EQ(writer.copyFromText(&reader, lineBreak), kVoSuccess);
      ASSERT_TRUE(writer.flush());
      ASSERT_EQ(writer.text, slowText(text, SIZE_MAX, lineBreak ? "<br>" : "\r\n", at));
    }
  }
}

TEST(VoMsgBufferedWriter, CopiesBytesThroughAnyBuffers) {
  std::string text;
  for (int i = 0; i < 5000; ++i) text += static_cast<char>(i * 7);
  for (const unsigned buffer : {1u, 3u, 1024u, 8192u}) {
    for (const unsigned n : {0u, 1u, 4999u, 5000u, 5001u}) {
      WindowReader reader(text, 700);
      LimitedWriter writer(SIZE_MAX, buffer);
      EXPECT_EQ(writer.copyFrom(&reader, n), n > 5000 ? kVoReadFailed : kVoSuccess);
      EXPECT_EQ(writer.text, text.substr(0, n));  // what was there is written in any case
    }
    std::vector<unsigned char> block(text.begin(), text.end());
    VoMsgMemoryReader reader(block.data(), 5000);
    LimitedWriter writer(SIZE_MAX, buffer);
    EXPECT_EQ(writer.copyFrom(&reader), kVoSuccess);
    EXPECT_EQ(writer.text, text);
  }
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
  EXPECT_EQ(writer.copyFrom(nullptr), kVoBadArgument);
  EXPECT_EQ(writer.copyFrom(nullptr, 1), kVoBadArgument);
  EXPECT_EQ(writer.copyFromText(nullptr, nullptr), kVoBadArgument);
  EXPECT_EQ(writer.copyFromText(nullptr, 1u), kVoBadArgument);
  EXPECT_TRUE(writer.write(nullptr, 0));
}

TEST(VoMsgBufferedWriter, FullBufferThatCannotBeEmptiedRefuses) {
  VoMsgFileWriter closed("/nonexistent/file", 4);
  EXPECT_TRUE(closed.write("abc", 3));
  EXPECT_FALSE(closed.write("def", 3));
  EXPECT_FALSE(closed.write("g", 1));
}

}  // namespace
