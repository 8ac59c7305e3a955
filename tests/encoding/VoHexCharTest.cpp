#include "vomsg/encoding/VoHexChar.h"

#include <gtest/gtest.h>

#include "tests/support/WindowStreams.h"

namespace {

using vomsg::test::LimitedWriter;
using vomsg::test::WindowReader;
using namespace std::string_literals;

std::string decode(const std::string& text, std::size_t window) {
  WindowReader reader(text, window);
  LimitedWriter writer;
  EXPECT_EQ(voDecodeHexChar(&writer, &reader), kVoSuccess);
  return writer.text;
}

TEST(HexChar, DecodesWhateverFollowsThePercentSign) {
  const std::pair<std::string, std::string> rows[] = {
      {"a%20b", "a b"},
      {"%zz", "\0"s},
      {"%1z", "\x01"},
      {"%c3%A9", "\xC3\xA9"},
      {"%4", ""},
      {"x%", "x"},
      {"% 1", "\x01"},
      {"%-1", "\xFF"},
      {"%0x", "\0"s},
      {"%%41", "\0"s + "1"},
      {"a\xFFz", "a"},
      {"%4\xFF"
       "1",
       ""},
      {"", ""},
  };
  for (const auto& [text, decoded] : rows)
    for (const std::size_t window : {1u, 2u, 100u}) EXPECT_EQ(decode(text, window), decoded) << text;
}

TEST(HexChar, EncodesEveryByte) {
  const std::string special = "*'%()<>@,;:\"/[]?=";
  for (int c = 0; c < 256; ++c) {
    const std::string byte(1, static_cast<char>(c));
    WindowReader reader(byte, 1);
    LimitedWriter writer;
    ASSERT_EQ(voEncodeHexChar(&writer, &reader), kVoSuccess);
    char escaped[4];
    snprintf(escaped, sizeof escaped, "%%%.2X", c);
    const bool plain = c > 0x20 && c < 0x80 && special.find(byte) == std::string::npos;
    EXPECT_EQ(writer.text, c == 0xFF ? "" : c >= 0x80 ? "%FF" : plain ? byte : escaped) << c;
    if (c < 0x80) {
      EXPECT_EQ(decode(writer.text, 1), byte);
    }
  }
}

TEST(HexChar, ReportsARefusedWrite) {
  LimitedWriter writer(1);
  WindowReader reader("abc", 1), again("abc", 1);
  EXPECT_EQ(voDecodeHexChar(&writer, &reader), kVoWriteFailed);
  EXPECT_EQ(voEncodeHexChar(&writer, &again), kVoWriteFailed);
  EXPECT_EQ(voDecodeHexChar(&writer, nullptr), kVoBadArgument);
}

}  // namespace
