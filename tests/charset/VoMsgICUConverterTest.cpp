#include "vomsg/charset/convert/VoMsgICUConverter.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <utility>
#include <vector>

#include "ConvertSupport.h"
#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/encoding/VoMsgUtf8Coder.h"

namespace {

// Of two escape sequences side by side the first goes, from the left, until none is left: quadratic and obvious.
std::string cleaned(std::string text) {
  const auto isEscape = [&](std::size_t at) {
    for (const char* escape : {"\x1B(B", "\x1B(J", "\x1B$@", "\x1B$B"})
      if (text.compare(at, 3, escape) == 0) return true;
    return false;
  };
  for (std::size_t i = 0; i + 6 <= text.size();)
    if (isEscape(i) && isEscape(i + 3))
      text.erase(i, 3);
    else
      ++i;
  return text;
}

// Everything decoded at once, everything encoded at once.
Converted atOnce(const char* to, const char* from, const std::string& text, bool enforce) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* decoder = ucnv_open(from, &status);
  UConverter* encoder = ucnv_open(to, &status);
  if (enforce)
    ucnv_setSubstChars(encoder, "?", 1, &status);
  else
    ucnv_setFromUCallBack(encoder, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  std::vector<char16_t> unicode(text.size() * 2 + 1);
  status = U_ZERO_ERROR;
  const auto units = ucnv_toUChars(decoder, unicode.data(), static_cast<int>(unicode.size()), text.data(),
                                   static_cast<int>(text.size()), &status);
  EXPECT_TRUE(U_SUCCESS(status));
  std::string out(static_cast<std::size_t>(units) * 8 + 16, '\0');
  status = U_ZERO_ERROR;
  ucnv_fromUChars(encoder, out.data(), static_cast<int>(out.size()), unicode.data(), units, &status);
  ucnv_close(decoder);
  ucnv_close(encoder);
  return U_SUCCESS(status) ? Converted{kVoSuccess, out.c_str()} : Converted{kVoConversionFailed, ""};
}

TEST(IcuConverter, InPiecesIsAsAtOnce) {
  constexpr struct {
    const char *to, *from, *alphabet;
  } kRows[] = {
      {"utf-8", "euc-kr", "ab \n\xB0\xA1\xC7\xD1\x8F"}, {"euc-kr", "utf-8", "ab\xED\x95\x9C\xF0\x9F\x98\x80\xC3"},
      {"utf-8", "iso-2022-jp", "\x1B$@B(J!ab\n"},       {"us-ascii", "koi8-r", "abcdefgh\xC1"},
      {"utf-7", "utf-8", "ab+&\xE4\xB8\xAD"},           {"iso-2022-kr", "euc-kr", "ab\n\xB0\xA1"},
      {"utf-8", "gb18030", "0123\x81\xFE\xA1\xB0zz"},   {"windows-1251", "windows-1252", "abcdefghijklmnopqrst\xA9"},
  };
  std::mt19937 random(11);
  for (const auto& row : kRows)
    for (int round = 0; round < 40; ++round) {
      SCOPED_TRACE(testing::Message() << row.from << " to " << row.to << ", round " << round);
      const bool enforce = round % 2 != 0;
      std::string text;
      for (int part = 0; part < 3; ++part) {
        text += randomText(random, row.alphabet, round < 20 ? 12 : 5000);
        text.append(round < 20 ? 0 : random() % 5000, 'a');
        if (random() % 8 == 0) text += '\0';
      }
      VoMsgICUConverter converter(row.to, row.from, enforce, '?');
      const bool jis = std::string_view(row.from) == "iso-2022-jp";
      const Converted want = atOnce(row.to, row.from, jis ? cleaned(text) : text, enforce);
      EXPECT_EQ(run(converter, text), want);
    }
}

// Every character that a charset may have, alone and among others, by whatever way the pair goes.
TEST(IcuConverter, EveryCharacterIsAsAtOnce) {
  std::string all;
  std::vector<std::string> planes;  // in stretches of some thousand characters
  for (char32_t c = 1; c < 0x30000; c += c == 0xD7FF ? 0x801 : 1) {
    vomsg::detail::appendUtf8(all, c);
    if (c % 7 == 0) all += c % 2 ? "z" : "\xC3";  // ASCII between, and bytes that are no UTF-8
    if (all.size() > 20000) planes.push_back(std::exchange(all, {}));
  }
  planes.push_back(all);
  constexpr const char* kCharsets[] = {"windows-1251", "windows-1252", "koi8-r",      "Shift_jis", "euc-jp",
                                       "iso-2022-jp",  "euc-kr",       "gb18030",     "gbk",       "big5",
                                       "EUC-TW",       "windows-1258", "windows-874", "utf-7",     "us-ascii",
                                       "dos-862",      "utf-8",        "hz-gb-2312"};
  for (const char* charset : kCharsets) {
    VoMsgICUConverter encoder(charset, "utf-8", 1, '?');
    VoMsgICUConverter strict(charset, "utf-8", 0, '?');
    VoMsgICUConverter decoder("utf-8", charset, 1, '?');
    for (const std::string& text : planes) {
      if (charset == std::string_view("iso-2022-jp") || charset == std::string_view("utf-8")) continue;
      const Converted want = atOnce(charset, "utf-8", text, true);
      ASSERT_EQ(run(encoder, text), want) << charset;
      ASSERT_EQ(run(strict, text), atOnce(charset, "utf-8", text, false)) << charset;
      ASSERT_EQ(run(decoder, want.text), atOnce("utf-8", charset, want.text, true)) << charset;
    }
    // All pairs of bytes, and four of them where three can be needed.
    std::string pairs;
    for (int pair = 0x101; pair < 0x10000; pair += pair % 256 == 255 ? 2 : 1)
      pairs += {static_cast<char>(pair >> 8), static_cast<char>(pair), 'a'};
    if (charset == std::string_view("iso-2022-jp")) pairs = cleaned(pairs);
    const bool isSame = charset == std::string_view("utf-8");
    const Converted want = isSame ? Converted{kVoSuccess, pairs} : atOnce("utf-8", charset, pairs, true);
    ASSERT_EQ(run(decoder, pairs), want) << charset;
  }
}

// Where a text is cut does not matter: the library converts in pieces what a caller hands over whole.
TEST(TextConversion, CutsAreNotSeen) {
  constexpr struct {
    const char *to, *from;
    std::string_view alphabet;
  } kRows[] = {
      {"utf-8", "gb2312", "ab\n\xB0\xA1\xC7\xFF\x80"},
      {"gb2312", "utf-8", "ab\xE4\xB8\xAD\xC3\xA9"},
      {"hz-gb-2312", "gb2312", "a~\n\xB0\xA1\xC7"},
      {"gb2312", "hz-gb-2312", "a~{}\r\n!0"},
      {"utf-8", "hz-gb-2312", "a~{}\r\n!0"},
      {"utf-8", "big5", "a\xA4\x40\xA4\xFF"},
      {"iso-8859-2", "iso-8859-1", "a\xE1\x80\xF0"},
      {"utf-8", "iso-8859-7", "a\xE1\x80\xFF"},
      {"iso-8859-15", "utf-8", "a\xE2\x82\xAC\xF0\xC3"},
      {"iso-2022-jp", "euc-jp", "a\n\x8E\xB6\xDE\xA4\xA2\x8F"},
      {"Shift_jis", "iso-2022-jp", "\x1B$B(IJ!a\n\x0E\x0F"},
      {"euc-jp", "Shift_jis", "a\x82\xA0\xB6\xFA\x40"},
      {"utf-8", "iso-2022-jp", "\x1B$B(BJ@!a"},
      {"iso-2022-jp", "utf-8", "a\xE3\x81\x82\n"},
      {"windows-1251", "utf-8", "a\xD0\x96\xC2\xAD\xF0"},
      {"utf-8", "gb18030", "0a\x81\x30\xFE"},
      {"utf-8", "utf-16le", "a\xD8\x3D\xDC\xFF\xFE"},
      {"koi8-r", "utf-16", "\x04\x10\xFE\xFF\xD8"},
      {"utf-8", "utf-32be", "\x01\xF6\xFE\xFF"},
      {"utf-8", "ucs-2", "a\x04\xD8"},
  };
  std::mt19937 random(5);
  using vomsg::detail::Loss;
  for (const auto& row : kRows)
    for (int round = 0; round < 200; ++round) {
      std::string text = randomText(random, row.alphabet, 60);
      if (round % 4 == 0) text.insert(random() % (text.size() + 1), 1, '\0');
      const Loss loss = round % 5 == 0 ? Loss::refused : Loss::replaced;
      SCOPED_TRACE(testing::Message() << row.from << " to " << row.to << ", round " << round);
      std::string whole, pieces;
      const bool isConverted = vomsg::detail::convertWholeText(row.to, row.from, loss, text, whole);
      vomsg::detail::TextConversion conversion(row.to, row.from, loss);
      VoErrorCode code = kVoSuccess;
      for (std::string_view rest = text; !rest.empty() && !voFailed(code);) {
        // Each piece in a block of its own, so that a look beyond its end is seen.
        const std::string piece(rest.substr(0, random() % 5));
        code = conversion.convert(std::string(piece), false, pieces);
        rest.remove_prefix(piece.size());
      }
      if (!voFailed(code)) code = conversion.convert({}, true, pieces);
      ASSERT_EQ(!voFailed(code), isConverted);
      if (isConverted) {
        ASSERT_EQ(pieces, whole);
      }
    }
}

TEST(IcuConverter, HandlesSpecialCharsets) {
  const struct {
    const char *to, *from;
    std::string_view text;
    bool enforce;
    Converted want;
  } kRows[] = {
      {"utf-8", "iso-2022-jp", "\x1B$B\x1B(B\x1B$B$\"\x1B(B", 1, {kVoSuccess, "\xE3\x81\x82"}},
      {"iso-2022-jp", "utf-8", "\xE3\x81\x82z", 1, {kVoSuccess, "\x1B$B$\"\x1B(Bz\x1B(B"}},
      {"iso-2022-jp", "utf-8", "\xE3\x81\x82", 1, {kVoSuccess, "\x1B$B$\"\x1B(B\x1B(B"}},
      {"iso-2022-jp", "utf-8", "z", 1, {kVoSuccess, "z"}},
      {"utf-8", "ucs-2", std::string_view("\0a\0", 3), 1, {kVoSuccess, "a"}},
      {"utf-8", "ucs-2", std::string_view("\0a\0\0\0b", 6), 1, {kVoSuccess, "a"}},
      {"ucs-2", "ucs-2", std::string_view("\0a\0", 3), 1, {kVoSuccess, std::string("\0a\0", 3)}},
      {"utf-8", "utf8", std::string_view("a\0\xFF", 3), 0, {kVoSuccess, std::string("a\0\xFF", 3)}},
      {"us-ascii", "koi8-r", std::string_view("a\0\xC1", 3), 0, {kVoConversionFailed, ""}},
      {"us-ascii", "koi8-r", std::string_view("a\0\xC1", 3), 1, {kVoSuccess, "a"}},
      {"utf-8", "koi8-r", "", 0, {kVoSuccess, ""}},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.from << " to " << row.to << ": " << row.text);
    EXPECT_EQ(convert(row.to, row.from, row.text, row.enforce), row.want);
  }
  VoMsgICUConverter broken("utf-8", "no-such-charset", 1, '?');
  EXPECT_EQ(run(broken, "a"), (Converted{kVoConverterMissing, ""}));
}

}  // namespace
