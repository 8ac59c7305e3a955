#include "vomsg/encoding/VoUUEncode.h"

#include <gtest/gtest.h>

#include "tests/support/MessageFixture.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgOptions.h"

namespace {

using vomsg::detail::CString;
using vomsg::test::LimitedWriter;
using vomsg::test::WindowReader;

struct Decoded {
  std::string bytes, name;
  unsigned end = 0;
};

Decoded decode(std::string_view text, std::size_t length, std::size_t window) {
  WindowReader reader(text, window);
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  EXPECT_EQ(voDecodeUUEncode(&target, &reader, static_cast<long>(length)), kVoSuccess);
  return {vomsg::test::bytesOf(&target), target.getResourceName("us-ascii"), reader.getOffset()};
}

std::string encode(std::string_view bytes, const char* name) {
  return vomsg::test::through(
      bytes, 100, [&](auto& writer, auto& reader) { EXPECT_TRUE(_encodeUUEncode(&writer, &reader, name)); });
}

TEST(UUEncode, BeginLines) {
  struct Row {
    const char* line;
    const char* name;  // null: not valid
  };
  constexpr Row kRows[] = {
      {"begin 644 a b.txt", "a b.txt"}, {"begin 644 x\r\n", "x"}, {"begin  a", "a"},       {"begin 0 ", ""},
      {"begin 64x a", nullptr},         {"begin644 a", nullptr},  {"begin 644", nullptr},  {"begin 644\n", nullptr},
      {"Begin 644 a", nullptr},         {"begin 8 a", nullptr},   {"begin\t7 a", nullptr}, {"", nullptr},
  };
  for (const Row& row : kRows) {
    char* found = nullptr;
    long mode = 0;
    EXPECT_EQ(voGetUUEncodeFileName(row.line, &found, &mode), row.name != nullptr) << row.line;
    const CString name(found);
    EXPECT_STREQ(name.get(), row.name);
    EXPECT_EQ(mode, -1);
    EXPECT_EQ(voGetUUEncodeFileName(row.line, nullptr, nullptr), row.name != nullptr);
  }
}

TEST(UUEncode, DataLines) {
  const std::string full = "M" + std::string(60, 'A');
  const std::string valid[] = {"#86)C", "#86)C\r\n", "!86)C", full, "`", "~\r", "#86)\x80"};
  const std::string loose[] = {full + "A", "#86)C\r\r"};
  const std::string invalid[] = {"", "\n", " ", "$86)C", "#86a\x80", "#86\200C", "begin"};
  for (const bool isStrict : {false, true}) {
    if (isStrict) VoMsgExtraOption |= kVoOptionStrictUUEncode;
    for (const std::string& line : valid) EXPECT_TRUE(voIsValidUUEncodeString(line.c_str())) << line;
    for (const std::string& line : loose) EXPECT_NE(voIsValidUUEncodeString(line.c_str()), isStrict) << line;
    for (const std::string& line : invalid) EXPECT_FALSE(voIsValidUUEncodeString(line.c_str())) << line;
  }
  VoMsgExtraOption &= ~kVoOptionStrictUUEncode;
}

TEST(UUEncode, FindsTheBlockInItsText) {
  const std::string data = "#86)C\r\n";
  struct Row {
    std::string text, bytes, name;
  };
  const Row rows[] = {
      {"Hello\r\nbegin 644 a b\r\n" + data + "`\r\nend\r\nrest", "abc", "a b"},
      {data + data + "`\r\nend\r\n", "abcabc", "noname"},
      {"BEGIN 644 a\r\n" + data, "", "noname"},                               // found in any case, valid in one
      {"begin 644 a\r\nHello there\r\n" + data + "~\nend\n", "abc", "a"},     // foreign lines are skipped
      {"begin 644 a\r" + data + "\xA3\xB8\xB6\xA9\xC3\n`\n", "abcabc", "a"},  // the parity bit is cleared
      {"begin 644 a\n#86)C", "abc", "a"},                                     // no end
      {"begin 644 a\n#86\n", "", "a"},  // three characters cannot carry three bytes
      {"begin 644 a\n\"86)\n!86\n`\n", "aba", "a"},
      {"nothing\nhere\n", "", "noname"},
      {"", "", "noname"},
  };
  for (const Row& row : rows) {
    for (const std::size_t window : {1u, 5u, 1000u}) {
      const Decoded decoded = decode(row.text, row.text.size(), window);
      EXPECT_EQ(decoded.bytes, row.bytes) << row.text;
      EXPECT_EQ(decoded.name, row.name) << row.text;
    }
  }
}

// A line that runs past the length is dropped whole, and the reader never stands behind the length.
TEST(UUEncode, StaysWithinItsLength) {
  const std::string text = "x\r\nbegin 644 a\r\n#86)C\r\n#86)C\n`\r\nend\r\nmore";
  const std::size_t first = text.find("#86)C\r\n") + 7, second = first + 6;
  for (std::size_t length = 0; length <= text.size(); ++length) {
    const std::string bytes = length < first ? "" : length < second ? "abc" : "abcabc";
    for (const std::size_t window : {1u, 4u, 1000u}) {
      const Decoded decoded = decode(text, length, window);
      EXPECT_EQ(decoded.bytes, bytes) << length;
      EXPECT_EQ(decoded.end, std::min(length, text.find("more"))) << length;
    }
  }
}

TEST(UUEncode, WritesOneBlock) {
  EXPECT_EQ(encode(std::string(45, 'x'), "name"),
            "begin 666 name\r\nM" + std::string(">'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX") +
                "\r\n`\r\nend\r\n");
  EXPECT_EQ(encode("", nullptr), "begin 666 unknown\r\n`\r\nend\r\n");
  EXPECT_EQ(encode("", "a\r\nb"), "begin 666 a\r\n`\r\nend\r\n");
  const VoMsgMemoryResource nameless(0u, nullptr, nullptr);
  LimitedWriter writer;
  ASSERT_EQ(voEncodeUUEncode(&writer, &nameless), kVoSuccess);
  EXPECT_EQ(writer.text, encode("", "noname"));
}

}  // namespace
