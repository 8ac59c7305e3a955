#include "vomsg/charset/convert/VoMsgICUConverter.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <vector>

#include "ConvertSupport.h"

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
