#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "ConvertSupport.h"
#include "vomsg/charset/convert/VoConvertCharset.h"
#include "vomsg/charset/convert/VoGetnUnicodeString.h"

namespace {

struct Pieces {
  VoErrorCode code;
  std::vector<std::string> texts;
};

Pieces divide(const char* from, const char* to, std::string text, unsigned firstRoom) {
  std::list<char*>* lines = nullptr;
  Pieces pieces{voDivisionConvert(from, to, text, firstRoom, &lines), {}};
  EXPECT_EQ(lines == nullptr, voFailed(pieces.code));
  if (lines) pieces.texts.assign(lines->begin(), lines->end());
  voFreeLineTable(lines);
  return pieces;
}

// Each piece stands alone: decoded by itself it gives its share of the text, and it stays within its budget.
TEST(DivisionConvert, PiecesStandAlone) {
  constexpr struct {
    const char* charset;
    std::size_t first, next;  // the longest pieces for a first room of 30, closing sequences included
  } kRows[] = {{"utf-8", 21, 45},     {"iso-2022-jp", 21, 42}, {"hz-gb-2312", 84, 42}, {"gb2312", 21, 45},
               {"euc-jp", 21, 45},    {"big5", 21, 48},        {"utf-7", 21, 45},      {"iso-8859-1", 10, 19},
               {"Shift_jis", 21, 42}, {"gb18030", 21, 45},     {"koi8-r", 30, 62},     {"iso_8859-5", 30, 58},
               {"iso-8859-5", 10, 19}};
  const std::vector<std::string> letters = {"a",       "b", " ", "~", "\xE4\xB8\xAD", "\xE6\x96\x87", "\xE4\xBA\xBA",
                                            "\xC3\xA9"};
  std::mt19937 random(3);
  for (const auto& row : kRows)
    for (int round = 0; round < 200; ++round) {
      std::string text;
      const std::size_t kinds = 1 + random() % letters.size();
      for (std::size_t i = random() % 120; i > 0; --i)
        text += letters[(random() % kinds + random() % 2 * 4) % letters.size()];
      SCOPED_TRACE(testing::Message() << row.charset << ": " << text);
      const Pieces pieces = divide("utf-8", row.charset, text, 30);
      ASSERT_EQ(pieces.code, kVoSuccess);
      std::string joined;
      for (std::size_t i = 0; i < pieces.texts.size(); ++i) {
        EXPECT_FALSE(pieces.texts[i].empty());
        EXPECT_LE(pieces.texts[i].size(), i == 0 ? row.first : row.next) << "piece " << i;
        joined += convert("utf-8", row.charset, pieces.texts[i]).text;
      }
      EXPECT_EQ(joined, convert("utf-8", row.charset, convert(row.charset, "utf-8", text).text).text);
    }
}

TEST(DivisionConvert, FillsPiecesAndKeepsTheirRules) {
  const std::string letters(200, 'a');
  EXPECT_EQ(divide("utf-8", "utf-8", letters, 30).texts[1].size(), 43u);
  EXPECT_EQ(divide("iso-2022-jp", "utf-8", "\x1B(B\x1B$B$\"\x1B(B", 30).texts,
            std::vector<std::string>{"\xE3\x81\x82"});
  EXPECT_EQ(divide("utf-8", "us-ascii", std::string("ab\0cd", 5), 30).texts, std::vector<std::string>{"ab"});
  EXPECT_EQ(divide("utf-8", "us-ascii", "\xC3\xA9", 30).texts, std::vector<std::string>{"?"});
  EXPECT_TRUE(divide("utf-8", "utf-8", "", 0).texts.empty());
  EXPECT_EQ(divide("utf-8", "utf-8", letters, 1'000'000).texts[0].size(), 125u);
  // Emoji and lone surrogates end pieces like other characters.
  std::string faces;
  for (int i = 0; i < 100; ++i) faces += "\xF0\x9F\x98\x80";
  EXPECT_EQ(divide("utf-8", "utf-8", faces, 30).texts[1].size(), 44u);
  std::string lone;
  for (int i = 0; i < 100; ++i) lone += "+2D0-";
  EXPECT_EQ(divide("utf-7", "utf-8", lone, 30).texts[1].size(), 45u);
}

// The first room decides alone about the first piece, up to the block of 127 bytes that every piece lies in.
TEST(DivisionConvert, FirstPieceTakesTheRoomGiven) {
  constexpr struct {
    const char* charset;
    unsigned room;
    std::size_t longest;  // bytes, the closing sequence included
  } kRows[] = {{"hz-gb-2312", 16, 42},   {"hz-gb-2312", 17, 45},  {"hz-gb-2312", 30, 84},  {"hz-gb-2312", 44, 126},
               {"hz-gb-2312", 999, 127}, {"iso-2022-jp", 57, 42}, {"iso-2022-jp", 60, 45}, {"iso-2022-jp", 999, 127}};
  std::string kanji;
  for (int i = 0; i < 100; ++i) kanji += "\xE4\xB8\xAD";
  for (const auto& row : kRows) {
    const std::size_t size = divide("utf-8", row.charset, kanji, row.room).texts[0].size();
    EXPECT_LE(size, row.longest) << row.charset << ", room " << row.room;
    EXPECT_GT(size + 6, row.longest) << row.charset << ", room " << row.room;  // what a character may leave over
  }
}

TEST(DivisionConvert, RefusesWhatCannotBe) {
  constexpr struct {
    const char *from, *to;
    unsigned room;
    VoErrorCode want;
  } kRows[] = {
      {"utf-8", "utf-8", 4, kVoSuccess},
      {"utf-8", "utf-8", 3, kVoBadArgument},            // no room for one character
      {"utf-8", "utf-8", 0x80000000u, kVoBadArgument},  // a negative room
      {"utf-8", "iso-8859-1", 2, kVoBadArgument},
      {"utf-8", "hz-gb-2312", 4, kVoSuccess},
      {"utf-8", "hz-gb-2312", 3, kVoBadArgument},
      {"utf-8", "iso-2022-jp", 12, kVoSuccess},
      {"utf-8", "iso-2022-jp", 11, kVoBadArgument},
      {"utf-8", "no-such-charset", 30, kVoConversionFailed},
      {"a/b", "utf-8", 30, kVoConversionFailed},
      {nullptr, "utf-8", 30, kVoBadArgument},
      {"utf-8", nullptr, 30, kVoBadArgument},
      {"utf-8", "utf-16be", 30, kVoConversionFailed},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << (row.from ? row.from : "null") << " to " << (row.to ? row.to : "null"));
    EXPECT_EQ(divide(row.from, row.to, "a", row.room).code, row.want) << row.room;
  }
  std::string text;
  EXPECT_EQ(voDivisionConvert("utf-8", "utf-8", text, 30, nullptr), kVoBadArgument);
}

TEST(GetnUnicodeString, TakesWhatSurelyFits) {
  const struct {
    std::u16string text;
    int pos;
    unsigned budget, width;
    int want;  // the new position, or -1 when refused
  } kRows[] = {
      {u"abcdefgh", 0, 6, 3, 3},
      {u"abcdefgh", 6, 100, 3, 8},
      {u"abc", 3, 6, 3, 3},
      {u"abc", 0, 2, 3, -1},
      {u"abc", 0, 0x80000003u, 3, -1},
      {u"abc", -1, 6, 3, -1},
      {u"\u4E2D\u4E2D\u4E2D\u4E2D", 0, 9, 3, 2},
      {u"a\tb", 0, 5, 3, 2},
      {u"\xD83D\xDE00\xD83D\xDE00", 0, 3, 3, 2},
      {u"\xD83D\xD83Dxy", 0, 3, 3, 3},  // goes on behind a surrogate without its partner
  };
  for (const auto& row : kRows) {
    std::u16string out = u"x";
    int pos = row.pos;
    const VoErrorCode code = voGetnUnicodeString(row.text, pos, row.budget, row.width, out);
    EXPECT_EQ(code, row.want < 0 ? kVoBadArgument : kVoSuccess) << row.budget;
    if (row.want < 0) continue;
    EXPECT_EQ(pos, row.want);
    EXPECT_EQ(out, u"x" + row.text.substr(static_cast<std::size_t>(row.pos), static_cast<std::size_t>(pos - row.pos)));
  }
}

}  // namespace
