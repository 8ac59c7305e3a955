#include "vomsg/encoding/VoCompressedRtf.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/WindowStreams.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace {

using vomsg::detail::LZFu;
using vomsg::test::LimitedWriter;
using vomsg::test::WindowReader;
using namespace std::string_literals;

std::string expand(std::string_view bytes, long length, std::size_t window, LZFu& state) {
  WindowReader reader(bytes, window);
  LimitedWriter writer;
  EXPECT_TRUE(vomsg::detail::_decodeLZFu(&state, &writer, &reader, length));
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
  EXPECT_EQ(expand("\x01\x00\x04"s), "{\\rtf1");
  EXPECT_EQ(expand("\x01\x0C\xD1"s), "txt");  // behind the prefix lies what has just come out
  EXPECT_EQ(expand("\x00"
                   "abcdefgh"s),
            "abcdefgh");
  EXPECT_EQ(expand("\x02"
                   "a\x0C\xF8"
                   "b"s),
            "aaaaaaaaaaab");                     // a run that overlaps itself
  EXPECT_EQ(expand("\x01\xFF\xF3"s), " {\\rt");  // the dictionary's end goes on at its start
  EXPECT_EQ(expand("\x00"
                   "abcdefgh\x80"s),
            "abcdefgh");                          // a control byte with nothing behind it
  EXPECT_EQ(expand("\x03\x00\x00\x00"s), "{\\");  // the cut reference is dropped
  EXPECT_EQ(expand(""), "");
  const std::string prefix = "\x01\x00\x4F"s;
  EXPECT_EQ(expand(prefix), "f1\\ansi\\mac\\deff0");
}

TEST(CompressedRtf, RandomStreamsThroughEveryWindowAndInPieces) {
  std::mt19937 random(207);
  for (int round = 0; round < 400; ++round) {
    std::string bytes(random() % 3000, '\0');
    for (char& c : bytes) c = static_cast<char>(random() % 3 == 0 ? 0 : random());
    const std::string expected = slowExpand(bytes);
    for (const std::size_t window : {1u, 77u, 10000u}) {
      LZFu state;
      ASSERT_EQ(expand(bytes, static_cast<long>(bytes.size()), window, state), expected) << round;
    }
  }
  // Cut where no reference is cut, the pieces give the whole.
  std::string literals;
  for (int i = 0; i < 500; ++i) literals += "\x10" + std::string(4, static_cast<char>(i)) + "\x00\x13xyz"s;
  LZFu state;
  std::string pieces;
  for (std::size_t at = 0, n = 10; at < literals.size(); at += 3 * n)
    pieces += expand(std::string_view(literals).substr(at, 3 * n),
                     static_cast<long>(std::min(3 * n, literals.size() - at)), 5, state);
  EXPECT_EQ(pieces, slowExpand(literals));
}

TEST(CompressedRtf, AShortSourceReadsAs0xFFWithinReason) {
  LZFu state, endless;
  EXPECT_EQ(expand("\x00"
                   "ab"s,
                   5, 10, state),
            "ab\xFF\xFF");
  EXPECT_LT(expand("\x00"
                   "ab"s,
                   1L << 30, 10, endless)
                .size(),
            60000u);
}

TEST(CompressedRtf, Resources) {
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  const std::string bytes = "\x01\x00\x04"s;
  WindowReader reader(bytes, 10), again(bytes, 10);
  ASSERT_EQ(voDecodeLZFu(&target, &reader, 3), kVoSuccess);
  EXPECT_EQ(target.getSize(VoMsgResourceLocator::dataPart), 6u);
  EXPECT_EQ(voDecodeLZFu(&target, nullptr, 3), kVoBadArgument);
  LZFu state;
  LimitedWriter refusing(3);
  EXPECT_FALSE(vomsg::detail::_decodeLZFu(&state, &refusing, &again, 3));
}

}  // namespace
