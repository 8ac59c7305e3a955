#include "vomsg/foundation/VoMsgBufferedWriter.h"

#include <gtest/gtest.h>

#include "tests/support/Inputs.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgFileWriter.h"

namespace {

using vomsg::test::LimitedWriter;
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
  EXPECT_EQ(writer.copyFrom(nullptr), kVoBadArgument);
  EXPECT_EQ(writer.copyFrom(nullptr, 1), kVoBadArgument);
  EXPECT_EQ(writer.copyFromText(nullptr, nullptr), kVoBadArgument);
  EXPECT_EQ(writer.copyFromText(nullptr, 1u), kVoBadArgument);
  EXPECT_TRUE(writer.write(nullptr, 0));
  VoMsgFileWriter closed("/nonexistent/file", 4);  // a full buffer that cannot be emptied
  EXPECT_TRUE(closed.write("abc", 3));
  EXPECT_FALSE(closed.write("def", 3));
  EXPECT_FALSE(closed.write("g", 1));
}

}  // namespace
