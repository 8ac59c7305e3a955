#include "vomsg/embedded/VoMsgEmbededScanner.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <random>
#include <string>

#include "tests/embedded/EmbeddedBlocks.h"
#include "vomsg/embedded/VoMsgBlockStartSearch.h"
#include "vomsg/embedded/VoMsgEncodedLineSearch.h"
#include "vomsg/encoding/VoPieceSink.h"
#include "vomsg/encoding/VoQuotedPrintable.h"
#include "vomsg/foundation/VoMsgAscii.h"

namespace {

using namespace vomsg::detail;
using vomsg::test::binHex;
using vomsg::test::WindowReader;

// The pieces as text: u and b for blocks, each with its range.
std::string scan(const std::string& text, std::size_t window = 4096) {
  WindowReader reader(text, window);
  EmbeddedScanner scanner(reader, 0, static_cast<std::uint32_t>(text.size()));
  std::string found;
  for (EmbeddedPiece piece; scanner.next(piece);)
    found += (piece.kind == EmbeddedKind::uuencode ? "u" : "b") + std::to_string(piece.offset) + "+" +
             std::to_string(piece.size) + " ";
  return found;
}

std::string range(const char* kind, std::size_t offset, std::size_t size) {
  return kind + std::to_string(offset) + "+" + std::to_string(size) + " ";
}

TEST(BlockStartSearch, FindsTheFirstLineHoweverTheTextIsCut) {
  static constexpr const char* kWords[] = {"\n",      "\r", "b", "begin ", "begin 6",
                                           "begin x", "(",  "x", " ",      "xxxxxxxxxxxxxxxx"};
  std::mt19937 random(45);
  std::vector<LineStartKernel> kernels{&findLineStartPortable};
  if (const auto kernel = lineStartKernelSse2()) kernels.push_back(kernel);
  if (const auto kernel = lineStartKernelAvx2()) kernels.push_back(kernel);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (std::size_t n = random() % 40; n > 0; --n)
      text += random() % 30 == 0 ? std::string(kBinHexMarker) : kWords[random() % std::size(kWords)];
    std::size_t expected = text.npos;
    for (std::size_t at = text.size(); at-- > 0;) {
      const std::string rest = text.substr(at);
      const bool isBegin = rest.size() > 6 && rest.starts_with("begin ") && std::strchr("01234567 ", rest[6]);
      if ((at == 0 || isLineEnd(text[at - 1])) && (isBegin || rest.starts_with(kBinHexMarker))) expected = at;
    }
    BlockStartSearch search;
    std::string_view rest = text;
    bool found = false;
    while (!rest.empty() && !found) {
      const std::size_t n = std::min<std::size_t>(rest.size(), random() % (round % 2 == 0 ? 3 : 200) + 1);
      const std::string piece(rest.substr(0, n));
      found = search.feed(piece);
      rest.remove_prefix(n);
    }
    ASSERT_EQ(found ? search.lineOffset() : text.npos, expected) << text;
    const std::unique_ptr<char[]> exact(new char[text.size()]);
    text.copy(exact.get(), text.size());
    for (const LineStartKernel kernel : kernels)
      ASSERT_EQ(kernel(exact.get(), exact.get() + text.size()),
                findLineStartPortable(exact.get(), exact.get() + text.size()));
  }
}

struct SearchSink final : PieceSink {
  bool put(std::string_view piece) override { return !(found = search.feed(piece)); }
  BlockStartSearch search;
  bool found = false;
};

// What the encoded bytes tell must never hide a line that the decoder shows; that it hides most others is its use.
TEST(EncodedLineSearch, MissesNoLineThatDecodingShows) {
  static const std::string kWords[] = {"=",
                                       "=\r\n",
                                       "\r\n",
                                       "\n",
                                       "\r",
                                       "b",
                                       "begin 644 x",
                                       "=62egin 6",
                                       "be",
                                       "gin 6",
                                       "=x\r ",
                                       "begin=20644",
                                       "(",
                                       " ",
                                       "\t",
                                       "=0A",
                                       "=0d",
                                       "=C3=A9",
                                       "=x",
                                       "bEgin 6",
                                       "=\n",
                                       "xxxx",
                                       "=28",
                                       "=3D",
                                       "begin=",
                                       "=206",
                                       "=0",
                                       "62",
                                       std::string(40, 'y'),
                                       "(This file must be converted with BinHex 4.0)",
                                       "(This=20file must be converted with =\r\nBinHex 4.0)"};
  std::mt19937 random(46);
  int shown = 0, hidden = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (auto words = 1 + random() % 12; words > 0; --words) text += kWords[random() % std::size(kWords)];
    WindowReader whole(text, 4096);
    SearchSink sink;
    decodeQuotedPrintableTo(sink, whole, text.size(), true);
    for (const std::size_t window : {std::size_t{4096}, std::size_t{64}, std::size_t{1 + random() % 100}}) {
      WindowReader reader(text, window);
      const bool may = mayBeginBlock(reader, text.size());
      ASSERT_TRUE(may || !sink.found) << window << " " << ::testing::PrintToString(text);
      shown += sink.found;
      hidden += !may;
    }
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at < end; ++at)
      ASSERT_EQ(findEncodedStart(at, end), findEncodedStartPortable(at, end));
  }
  EXPECT_GT(shown, 1500);
  EXPECT_GT(hidden, 7000);
}

TEST(EmbeddedScanner, Blocks) {
  const std::string block = "begin 644 a b\n#86)C\n`\nend\n", empty = "begin 0 x\n`\nend\n";
  const std::string mac = binHex("some bytes", "mac file");
  const std::string torn = mac.substr(0, mac.size() - 3);
  struct Row {
    std::string before, block, after;
    const char* kind;  // of the block; null: there is none
  };
  const Row rows[] = {
      {"Hello\n", block, "Bye\n", "u"},
      {"", block, "", "u"},
      {"", "begin  a\n#86)C\n`\nend\n", "", "u"},  // no mode between the two blanks
      {"Hello\n", "begin 644 a\r\n#86)C\r\n`\r\nend", "", "u"},
      {"", "begin 644 a\n#86)C\n", "Hello\n", "u"},     // no end: as far as lines are data
      {"", "begin 644 a\n#86)C\n#86)C", "", "u"},       // the text ends
      {"", "begin 644 a\n#86)C\n`\n", "\nend\n", "u"},  // an empty line is no data
      {"begin 9 y\nbegin 644 x\n", empty, "", "u"},     // after two that are prose
      {"", "begin 644 x\nHello\n", "", nullptr},
      {"", "begin 644 x\n`\nHello\n", "", nullptr},            // a zero line alone is no block
      {"we\n ", "begin 644 a\n#86)C\n`\nend\n", "", nullptr},  // not at the start of its line
      {"Begin 644 a\n#86)C\n`\nend\n", "", "", nullptr},       // parsed with case
      {"begin 644 a", "", "", nullptr},
      {"Hello\r\n", mac, "Bye\r\n", "b"},
      {"", std::string(kBinHexMarker) + "\r\n\r\n" + mac.substr(kBinHexMarker.size() + 2), "", "b"},
      {"", mac.substr(0, mac.size() - 2) + " \n", "Bye\n", "b"},  // blanks behind the colon belong to it
      {"", torn, "", nullptr},                                    // no closing colon
      {torn, "", "\n" + std::string(kBinHexMarker) + "\n", nullptr},
      {std::string(kBinHexMarker) + "\n:garbage!", "", ":\n", nullptr},
      {std::string(kBinHexMarker) + "\nHello\n", "", "", nullptr},
  };
  for (const Row& row : rows) {
    const std::string expected = row.kind ? range(row.kind, row.before.size(), row.block.size()) : "";
    const std::string text = row.before + row.block + row.after;
    for (const std::size_t window : {1u, 3u, 4096u}) EXPECT_EQ(scan(text, window), expected) << text;
  }
  EXPECT_EQ(scan(block + block + "text\n" + mac + block),
            range("u", 0, block.size()) + range("u", block.size(), block.size()) +
                range("b", 2 * block.size() + 5, mac.size()) +
                range("u", 2 * block.size() + 5 + mac.size(), block.size()));
}

// Prose, code, diffs, lists and quoted mail that speak of "begin".
TEST(EmbeddedScanner, TenThousandOrdinaryTextsHoldNoBlock) {
  std::vector<std::string> lines;
  std::ifstream file(VOMSG_TEST_DATA "/embedded/ordinary_lines.txt");
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  ASSERT_GT(lines.size(), 20u);
  std::mt19937 random(644);
  for (int round = 0; round < 10000; ++round) {
    std::string text;
    for (std::size_t n = random() % 60; n > 0; --n) {
      const std::size_t pick = random() % 12;
      if (pick == 0) text += "begin " + std::to_string(random() % 778) + " some.file\n";
      std::string line = lines[random() % lines.size()];
      if (pick == 1) line = "> " + line;
      if (pick == 2)
        for (char& c : line) c = static_cast<char>(toupper(c));
      text += line + (pick == 3 ? "\r\n" : "\n");
    }
    ASSERT_EQ(scan(text), "") << text;
  }
}

}  // namespace
