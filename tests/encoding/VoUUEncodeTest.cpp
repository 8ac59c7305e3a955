#include "vomsg/encoding/VoUUEncode.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/Tools.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgOptions.h"

namespace {

using vomsg::detail::CString;
using vomsg::test::LimitedWriter;
using vomsg::test::WindowReader;

struct Decoded {
  std::string bytes;
  std::string name = "(none)";
  unsigned end = 0;
};

Decoded decode(std::string_view text, std::size_t length, std::size_t window) {
  WindowReader reader(text, window);
  LimitedWriter writer;
  char* name = nullptr;
  EXPECT_TRUE(vomsg::detail::_decodeUUEncode(&writer, &reader, static_cast<long>(length), &name));
  Decoded decoded{writer.text, name ? name : "(none)", reader.getOffset()};
  free(name);
  return decoded;
}

std::string encode(std::string_view bytes, const char* name) {
  WindowReader reader(bytes, 100);
  LimitedWriter writer;
  EXPECT_TRUE(vomsg::detail::_encodeUUEncode(&writer, &reader, name));
  return writer.text;
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
  struct Row {
    std::string line;
    bool valid, strict;
  };
  const Row rows[] = {
      {"#86)C", true, true},
      {"#86)C\r\n", true, true},
      {"$86)C", false, false},
      {"!86)C", true, true},
      {full, true, true},
      {full + "A", true, false},
      {"`", true, true},
      {"~\r", true, true},
      {"", false, false},
      {"\n", false, false},
      {" ", false, false},
      {"#86a\x80", false, false},
      {"#86\x80"
       "C",
       false, false},
      {"#86)\x80", true, true},
      {"#86)C\r\r", true, false},
      {"begin", false, false},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(voIsValidUUEncodeString(row.line.c_str()), row.valid) << row.line;
    VoMsgExtraOption |= kVoOptionStrictUUEncode;
    EXPECT_EQ(voIsValidUUEncodeString(row.line.c_str()), row.strict) << row.line;
    VoMsgExtraOption &= ~kVoOptionStrictUUEncode;
  }
}

TEST(UUEncode, FindsTheBlockInItsText) {
  const std::string data = "#86)C\r\n";
  struct Row {
    std::string text, bytes, name;
  };
  const Row rows[] = {
      {"Hello\r\nbegin 644 a b\r\n" + data + "`\r\nend\r\nrest", "abc", "a b"},
      {data + data + "`\r\nend\r\n", "abcabc", "(none)"},
      {"BEGIN 644 a\r\n" + data, "", "(none)"},                               // found in any case, valid in one
      {"begin 644 a\r\nHello there\r\n" + data + "~\nend\n", "abc", "a"},     // foreign lines are skipped
      {"begin 644 a\r" + data + "\xA3\xB8\xB6\xA9\xC3\n`\n", "abcabc", "a"},  // the parity bit is cleared
      {"begin 644 a\n#86)C", "abc", "a"},                                     // no end
      {"begin 644 a\n#86\n", "", "a"},  // three characters cannot carry three bytes
      {"begin 644 a\n\"86)\n!86\n`\n", "aba", "a"},
      {"nothing\nhere\n", "", "(none)"},
      {"", "", "(none)"},
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

TEST(UUEncode, EncodesAndDecodesEveryLength) {
  EXPECT_EQ(encode(std::string(45, 'x'), "name"),
            "begin 666 name\r\nM" + std::string(">'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX>'AX") +
                "\r\n`\r\nend\r\n");
  EXPECT_EQ(encode("", nullptr), "begin 666 unknown\r\n`\r\nend\r\n");
  EXPECT_EQ(encode("", "a\r\nb"), "begin 666 a\r\n`\r\nend\r\n");
  std::mt19937 random(45);
  for (std::size_t size = 0; size < 33000; size += size < 300 ? 1 : 4093) {
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    const std::string text = encode(bytes, "f");
    EXPECT_EQ(decode(text, text.size(), size % 3 + 1).bytes, bytes) << size;
  }
}

TEST(UUEncode, RandomTextDecodesAlikeThroughEveryWindow) {
  std::mt19937 random(3);
  constexpr std::string_view kBytes = "begin 644 a\r\n#86)C`~M!\x80\n\nend";
  for (int round = 0; round < 3000; ++round) {
    std::string text = round % 2 == 0 ? "begin 7 x\n" : "";
    while (text.size() < 100) text += random() % 8 == 0 ? "#86)C\n" : std::string(1, kBytes[random() % kBytes.size()]);
    const std::size_t length = random() % 110;
    const Decoded one = decode(text, length, 1), all = decode(text, length, 1000);
    EXPECT_EQ(one.bytes, all.bytes) << text;
    EXPECT_EQ(one.end, all.end) << text;
    EXPECT_LE(all.end, length);
  }
}

TEST(UUEncode, Resources) {
  char bytes[] = "abc";
  VoMsgMemoryResource source(bytes, 3, "a b.txt", "us-ascii"), target(1u, nullptr, nullptr);
  LimitedWriter writer, refusing(10);
  ASSERT_EQ(voEncodeUUEncode(&writer, &source), kVoSuccess);
  EXPECT_EQ(voEncodeUUEncode(&refusing, &source), kVoWriteFailed);
  WindowReader reader(writer.text, 100), nameless("#86)C\n", 100);
  ASSERT_EQ(voDecodeUUEncode(&target, &reader, static_cast<long>(writer.text.size())), kVoSuccess);
  EXPECT_STREQ(target.getResourceName("us-ascii"), "a b.txt");
  EXPECT_EQ(target.getSize(VoMsgResourceLocator::dataPart), 3u);
  ASSERT_EQ(voDecodeUUEncode(&target, &nameless, 6), kVoSuccess);
  EXPECT_STREQ(target.getResourceName("us-ascii"), "noname");
}

TEST(UUEncode, AgreesWithTheSystemsTools) {
  if (!vomsg::test::hasTool("uuencode") || !vomsg::test::hasTool("uudecode")) GTEST_SKIP() << "no uuencode";
  std::mt19937 random(7);
  for (const std::size_t size : {0u, 1u, 44u, 45u, 46u, 1000u, 40000u}) {
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    const std::string theirs = vomsg::test::runTool("uuencode a.bin", bytes);
    EXPECT_EQ(decode(theirs, theirs.size(), 4096).bytes, bytes);
    EXPECT_EQ(vomsg::test::runTool("uudecode -o /dev/stdout", encode(bytes, "a.bin")), bytes);
  }
}

}  // namespace
