#include "vomsg/encoding/VoCompressedRtf.h"

#include <gtest/gtest.h>

#include "tests/support/Inputs.h"
#include "tests/support/WindowStreams.h"

namespace {

using namespace vomsg::test;
using namespace std::string_literals;

std::string expand(std::string_view bytes, long length, std::size_t window, LZFu& state) {
  WindowReader reader(bytes, window);
  LimitedWriter writer;
  EXPECT_TRUE(_decodeLZFu(&state, &writer, &reader, length));
  return writer.text;
}

std::string expand(std::string_view bytes) {
  LZFu state;
  return expand(bytes, static_cast<long>(bytes.size()), 100, state);
}

// Everything that ever came out is one long text, of which the dictionary is the latest 4096 bytes.
std::string slowExpand(std::string_view bytes) {
  std::string dictionary(4096, ' '), out;
  const LZFu initial;
  for (std::size_t i = 0; i < 207; ++i) dictionary[i] = static_cast<char>(initial.dictionary[i]);
  const auto put = [&](char c) {
    dictionary[(207 + out.size()) % 4096] = c;
    out += c;
  };
  for (std::size_t at = 0; at < bytes.size();) {
    const unsigned control = static_cast<unsigned char>(bytes[at++]);
    for (int flag = 0; flag < 8 && at < bytes.size(); ++flag) {
      if ((control >> flag & 1) == 0) {
        put(bytes[at++]);
      } else {
        if (at + 2 > bytes.size()) return out;
        const unsigned pair = static_cast<unsigned>(static_cast<unsigned char>(bytes[at]) << 8 |
                                                    static_cast<unsigned char>(bytes[at + 1]));
        at += 2;
        for (unsigned i = 0; i < (pair & 15) + 2; ++i) put(dictionary[((pair >> 4) + i) % 4096]);
      }
    }
  }
  return out;
}

TEST(CompressedRtf, HandBuiltStreams) {
  const std::pair<std::string, std::string> rows[] = {
      {"\1\0\4"s, "{\\rtf1"},
      {"\1\0\x4F"s, "f1\\ansi\\mac\\deff0"},
      {"\1\x0C\xD1"s, "txt"},  // behind the prefix lies what has just come out
      {"\0abcdefgh"s, "abcdefgh"},
      {"\0abcdefgh\x80"s, "abcdefgh"},                    // a control byte with nothing behind it
      {"\2a\x0C\370b", "aaaaaaaaaaab"},                   // a run that overlaps itself
      {"\x55\0\0a\0\0b\0\0c\0\0d"s, "{\\a{\\b{\\c{\\d"},  // flags from the lowest bit up
      {"\1\xFF\xF3", " {\\rt"},                           // the dictionary's end goes on at its start
      {"\3\0\0\0"s, "{\\"},                               // the cut reference is dropped
      {"", ""},
  };
  for (const auto& [stream, text] : rows) EXPECT_EQ(expand(stream), text) << text;
}

TEST(CompressedRtf, RandomStreamsThroughEveryWindow) {
  std::mt19937 random(207);
  for (int round = 0; round < 400; ++round) {
    std::string bytes = randomBytes(random, random() % 3000);
    for (char& c : bytes) c = random() % 3 == 0 ? '\0' : c;
    const std::string expected = slowExpand(bytes);
    for (const std::size_t window : {1u, 77u, 10000u}) {
      LZFu state;
      ASSERT_EQ(expand(bytes, static_cast<long>(bytes.size()), window, state), expected) << round;
    }
  }
}

// However the input is cut: the first byte of a reference that a piece ends in waits for the next piece.
TEST(CompressedRtf, PiecesGiveTheWhole) {
  std::mt19937 random(16);
  for (long piece = 2; piece < 40; ++piece) {
    const std::string bytes = randomBytes(random, 900);
    LZFu state;
    WindowReader reader(bytes, 7);
    LimitedWriter writer;
    for (long left = 900, before = 0; left > 0 && left != before; left = 900 - static_cast<long>(reader.getOffset())) {
      before = left;
      ASSERT_TRUE(_decodeLZFu(&state, &writer, &reader, std::min(piece, left)));
    }
    EXPECT_EQ(writer.text, slowExpand(bytes)) << piece;
  }
}

TEST(CompressedRtf, AShortSourceReadsAs0xFFWithinReason) {
  LZFu state, endless;
  EXPECT_EQ(expand("\0ab"s, 5, 10, state), "ab\xFF\xFF");
  EXPECT_LT(expand("\0ab"s, 1L << 30, 10, endless).size(), 60000u);
}

}  // namespace
