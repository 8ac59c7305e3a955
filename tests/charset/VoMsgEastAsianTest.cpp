// Japanese and Chinese text as mail has it: habits of real mailers, cuts, and noise.
#include <gtest/gtest.h>

#include "ConvertSupport.h"

namespace {

constexpr VoErrorCode kFailed = kVoConversionFailed;

TEST(EastAsian, ReadsWhatMailersWrite) {
  const struct {
    const char *from, *to;
    std::string_view text;
    const char* want;
    VoErrorCode strictly = kVoSuccess;  // what comes of it without replacement
  } kRows[] = {
      // Escape sequences: Roman instead of ASCII, the set of 1978, several in a row, none at the line's end.
      {"jis", "euc-jp", "\x1B(JY\\~\x1B$@$\"\x1B(J", "Y\\~\xA4\xA2"},
      {"jis", "euc-jp", "\x1B$B\x1B(B\x1B$B$\"\x1B$@$$\x1B(B\x1B(B", "\xA4\xA2\xA4\xA4"},
      {"jis", "euc-jp", "\x1B$B$\"\r\nabc\n\x1B$B$$\rxy", "\xA4\xA2\r\nabc\n\xA4\xA4\rxy"},
      {"jis", "euc-jp", "\x1B$B$\"\t $$\x1B(B", "\xA4\xA2\t \xA4\xA4"},
      {"jis", "euc-jp", "a\x1B[0mb\x1B", "a?[0mb?", kFailed},
      {"jis", "us-ascii", "a\x1B$B$\"$$\x1B(B\r\nb", "a??\r\nb", kFailed},
      // Half-width kana, in each of the three ways that ISO-2022-JP does not allow.
      {"jis", "sjis", "\x1B(IJ6^\x1B(BJ\x0EJ\x0FJ", "\xCA\xB6\xDEJ\xCAJ"},
      {"jis", "euc-jp", "\x0EJ\nJ", "\x8E\xCA\nJ"},
      {"jis", "euc-jp", "\x1B(I`\x1B(B", "?", kFailed},
      {"sjis", "jis", "\xB6\xDE\xB6\xDF\xCA\xDF\xB3\xDE\xDC\xDE\xB6", "\x1B$B%,%+!,%Q%t%o!+%+\x1B(B"},
      {"euc-jp", "jis", "\x8E\xCAz\x8E\xDE\r\n\x8E\xB1", "\x1B$B%O\x1B(Bz\x1B$B!+\x1B(B\r\n\x1B$B%\"\x1B(B"},
      // Vendor characters: circled digits, and a name written with the other vendor's code.
      {"sjis", "jis", "\x87\x40\x87\x41", "\x1B$B-!-\"\x1B(B"},
      {"sjis", "euc-jp", "\xFB\xFC\xFA\x40\xFA\x4A\xFA\x58", "\xFC\xE2\xFC\xF1\xAD\xB5\xAD\xEA"},
      {"sjis", "euc-jp", "\xF0\x40z\xFC\x4C", "?z?", kFailed},
      {"euc-jp", "sjis", "a\x8F\xB0\xA1z\\~", "a?z\\~", kFailed},
      // Invalid and cut characters cost a replacement each.
      {"euc-jp", "jis", "\xA4\xA2\xA4", "\x1B$B$\"\x1B(B?", kFailed},
      {"euc-jp", "sjis", "\x8F\xB0", "?", kFailed},
      {"euc-jp", "sjis", "\xA4Z\x8EZ\xFF", "?Z?Z?", kFailed},
      {"sjis", "euc-jp", "\x82", "?", kFailed},
      {"sjis", "euc-jp", "\x82\n\x80\xA0\xFD", "?\n???", kFailed},
      {"jis", "sjis", "\x1B$B$\"$", "\x82\xA0?", kFailed},
      {"jis", "sjis", "\x1B$B$\r\n\xA4", "?\r\n?", kFailed},
      // HZ: lines joined, tildes doubled or not, mode left open, characters of GBK only.
      {"hz-gb-2312", "gb2312", "~{VP~}~\nxyz~~\n~{ND", "\xD6\xD0xyz~\n\xCE\xC4"},
      {"hz-gb-2312", "gb2312", "a~\r\nb~user~}c", "ab~userc"},
      {"hz-gb-2312", "gb2312", "~{VP\r\nND", "\xD6\xD0\r\nND"},
      {"hz-gb-2312", "gb2312", "~{VP ND~~~}", "\xD6\xD0 \xCE\xC4~"},
      {"hz-gb-2312", "utf-8", "~{V", "?", kFailed},
      {"hz-gb-2312", "utf-8", "a~", "a?", kFailed},
      {"hz-gb-2312", "utf-8", "~{x!VP\xD6", "?\xE4\xB8\xAD?", kFailed},
      {"gb2312", "hz-gb-2312", "~\xD6\xD0\n\xCE\xC4", "~~~{VP~}\n~{ND~}"},
      {"gb2312", "hz-gb-2312", "\x81\x40z\xF8\xA1", "?z?", kFailed},
      // GBK under the label of GB2312; written is GB2312 alone, with two old mappings.
      {"gb2312", "utf-8", "\xE9\x46\xA1\xAA\x80", "\xE9\x95\x95\xE2\x80\x94\xE2\x82\xAC"},
      {"gb2312", "utf-8", "\xD6", "?", kFailed},
      {"gb2312", "utf-8", "\xD6\n\xFF", "?\n?", kFailed},
      {"utf-8", "gb2312", "\xE2\x80\x95\xE2\x80\x94\xE3\x83\xBB\xC2\xB7", "\xA1\xAA\xA1\xAA\xA1\xA4\xA1\xA4"},
      {"utf-8", "gb2312", "\xE9\x95\x95z\xE2\x82\xAC", "?z?", kFailed},
      {"utf-8", "gb2312", "a\xE4\xB8", "a?", kFailed},
      {"big5", "utf-8", "\x80\xFF", "??", kFailed},
      {"utf-8", "big5", "\xC2\x80\xEF\xA3\xB8", "??", kFailed},
      {"big5", "utf-8", "\xA4\xA4\xA4", "\xE4\xB8\xAD?", kFailed},
      {"utf-8", "big5", "\xE4\xB8\xAD\xC3\xA9", "\xA4\xA4?", kFailed},
      // Text ends at a NUL.
      {"sjis", "euc-jp", std::string_view("a\0\x82", 3), "a"},
      {"gb2312", "utf-8", std::string_view("a\0\xD6", 3), "a"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.from << " to " << row.to << ": " << testing::PrintToString(row.text));
    EXPECT_EQ(convert(row.to, row.from, row.text), (Converted{kVoSuccess, row.want}));
    const bool fails = row.strictly == kFailed;
    EXPECT_EQ(convert(row.to, row.from, row.text, false), (Converted{row.strictly, fails ? "" : row.want}));
  }
}

// Noise of bytes that mean something: by way of a third charset it becomes what it becomes directly, and when nothing
// had to be replaced the strict conversion gives the same.
TEST(EastAsian, WaysMeet) {
  constexpr struct {
    const char *from, *by, *to;
  } kRows[] = {
      {"Shift_jis", "euc-jp", "iso-2022-jp"},
      {"euc-jp", "Shift_jis", "iso-2022-jp"},
      {"iso-2022-jp", "euc-jp", "Shift_jis"},
      {"iso-2022-jp", "Shift_jis", "euc-jp"},
      {"hz-gb-2312", "gb2312", "utf-8"},
      {"gb2312", "hz-gb-2312", "gb2312"},
      {"utf-8", "big5", "utf-8"},
      {"big5", "utf-8", "big5"},
      {"utf-8", "gb2312", "utf-8"},
      {"iso-2022-jp", "Shift_jis", "own utf-8"},
      {"own utf-8", "Shift_jis", "own utf-8"},
      {"own utf-8", "Shift_jis", "iso-2022-jp"},
  };
  constexpr std::string_view kMeaning =
      "\x1B$B(J@I~{}ab\r\n\x0E\x0F!\\\x81\x8E\x8F\xA4\xB6\xDE\xE0\xFA\xFC\xFE\x7E\x80\xE4\xB8\xAD";
  std::mt19937 random(5);
  for (const auto& row : kRows)
    for (int round = 0; round < 400; ++round) {
      std::string text = randomText(random, kMeaning, round < 200 ? 12 : 300);
      if (round % 4 == 0)
        for (char& c : text) c = static_cast<char>(random());
      SCOPED_TRACE(testing::Message() << row.from << " to " << row.to << ": " << testing::PrintToString(text));
      const Converted by = convert(row.by, row.from, text);
      ASSERT_EQ(by.code, kVoSuccess);
      const Converted strict = convert(row.by, row.from, text, false);
      EXPECT_EQ(strict.text, voFailed(strict.code) ? "" : by.text);
      if (std::string_view(row.from) != row.to) {
        EXPECT_EQ(convert(row.to, row.by, by.text), convert(row.to, row.from, text));
      } else if (!voFailed(strict.code)) {
        EXPECT_EQ(convert(row.by, row.from, convert(row.to, row.by, by.text).text), by);
      }
    }
}

}  // namespace
