#include "vomsg/encoding/VoHexChar.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/WindowStreams.h"

namespace {

using namespace vomsg::test;
using namespace std::string_literals;

std::string decode(const std::string& text, std::size_t window) {
  return through(text, window,
                 [](auto& writer, auto& reader) { EXPECT_EQ(voDecodeHexChar(&writer, &reader), kVoSuccess); });
}

TEST(HexChar, DecodesWhateverFollowsThePercentSign) {
  const std::pair<std::string, std::string> rows[] = {
      {"a%20b", "a b"}, {"%c3%A9", "\xC3\xA9"}, {"%zz", "\0"s},     {"%1z", "\1"}, {"% 1", "\1"},
      {"%-1", "\xFF"},  {"%0x", "\0"s},         {"%%41", "\0001"s}, {"%4", ""},    {"x%", "x"},
      {"", ""},         {"a\xFFz", "a"},        {"%4\3771", ""},  // ends the input
  };
  for (const auto& [text, decoded] : rows)
    for (const std::size_t window : {1u, 2u, 100u}) EXPECT_EQ(decode(text, window), decoded) << text;
}

TEST(HexChar, EncodesEveryByte) {
  // By number: a list of characters would have to be escaped like the one it checks.
  constexpr int kSpecial[] = {0x22, 0x25, 0x27, 0x28, 0x29, 0x2A, 0x2C, 0x2F, 0x3A,
                              0x3B, 0x3C, 0x3D, 0x3E, 0x3F, 0x40, 0x5B, 0x5C, 0x5D};
  for (int c = 0; c < 256; ++c) {
    const std::string byte(1, static_cast<char>(c));
    const std::string encoded =
        through(byte, 1, [](auto& writer, auto& reader) { EXPECT_EQ(voEncodeHexChar(&writer, &reader), kVoSuccess); });
    char escaped[4];
    snprintf(escaped, sizeof escaped, "%%%.2X", c);
    const bool plain =
        c > 0x20 && c < 0x80 && std::find(std::begin(kSpecial), std::end(kSpecial), c) == std::end(kSpecial);
    EXPECT_EQ(encoded, c == 0xFF ? "" : c >= 0x80 ? "%FF" : plain ? byte : escaped) << c;
  }
}

}  // namespace
