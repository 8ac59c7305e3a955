#include "vomsg/header/VoMsgEncodedWord.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgCString.h"

namespace {

std::string taken(char* text) {
  const std::string copy = text ? text : "(null)";
  voFreeHeaderValue(text);
  return copy;
}

std::string converted(const char* charset, const std::string& value) {
  const auto exact = vomsg::detail::copyCString(value);
  char* out = nullptr;
  EXPECT_EQ(voDecodeHeaderValue(charset, exact.get(), &out), kVoSuccess);
  return taken(out);
}

using Reported = std::pair<std::string, std::string>;  // text and charset

Reported reported(const std::string& value) {
  const auto exact = vomsg::detail::copyCString(value);
  char* out = nullptr;
  char* charset = strdup("an earlier report");
  EXPECT_EQ(voDecodeHeaderValue(charset, out, exact.get()), kVoSuccess);
  return {taken(out), taken(charset)};
}

std::string encoded(const char* charset, const char* value, signed char force) {
  char* out = nullptr;
  EXPECT_EQ(voEncodeHeaderValue(charset, value, &out, force), kVoSuccess);
  return taken(out);
}

TEST(EncodedWord, DecodesValues) {
  struct Row {
    const char* value;
    const char* want;      // in UTF-8
    const char* reported;  // by the form that does not convert, where it differs
    const char* charset;
  };
  constexpr Row kRows[] = {
      {"=?iso-8859-1?Q?a_b?=", "a b", nullptr, "iso-8859-1"},
      {"=?utf-8?B?\?=", "", nullptr, "utf-8"},
      {"=?iso-8859-1*de?Q?=E4?=", "\xC3\xA4", "\xE4", "iso-8859-1"},  // its language is passed over
      {"=?iso-8859-1*?Q?=E4?=", "\xC3\xA4", "\xE4", "iso-8859-1"},
      {"=?UTF-8?q?=41?=", "A", nullptr, "UTF-8"},  // the text begins with "=", which is no "?="
      {"=?utf-8?Q?a b?c?=", "a b?c", nullptr, "utf-8"},
      {"=?utf-8?Q?what?\?=", "what?", nullptr, "utf-8"},
      {"=?utf-8?Q?=4=zz=?=", "4zz", nullptr, "utf-8"},  // "=" without two digits goes alone
      {"=?utf-8?B?QU JD*RA===?=", "ABCD", nullptr, "utf-8"},
      {"=?utf-8?B?QQBC?=d", "Ad", nullptr, "utf-8"},  // NUL ends the word
      {"=?utf-8?Q?A=00B?=d", "Ad", nullptr, "utf-8"},
      {"=?iso-8859-1?Q?=E4?=", "\xC3\xA4", "\xE4", "iso-8859-1"},
      {"=?utf8?Q?=E4?=", "\xE4", nullptr, "utf8"},  // equal charsets: not even looked at
      {"=?x-none?Q?=E4?=", "\xE4", nullptr, "x-none"},
      {"=?utf-8?Q?a?=\r\n =?utf-8?Q?b?=", "ab", nullptr, "utf-8"},
      {"=?utf-8?Q?a?= \t=?koi8-r?Q?b?= c", "a \tb c", "abc", "koi8-r"},
      {"=?utf-8?Q?a?=b c", "ab c", nullptr, "utf-8"},
      {"a\r\n =?utf-8?Q?b?= c", "abc", nullptr, "utf-8"},  // the fold stays in force behind a word
      {"a\r\n \t b c\r", "ab c", nullptr, "(null)"},
      {"a \n\n b", "a b", nullptr, "(null)"},
      // What is no word stays, up to the token that did not fit.
      {"=?utf-8?X?abc?= d", "=?utf-8?X?abc?= d", "=?utf-8?X?abc?=d", "utf-8"},
      {"=?utf-8?BB?QQ==?=", "=?utf-8?BB?QQ==?=", nullptr, "utf-8"},
      {"=?utf-8?Q?abc", "=?utf-8?Q?abc", nullptr, "utf-8"},
      {"=?utf-8?Q?=", "=?utf-8?Q?=", nullptr, "utf-8"},
      {"=?utf-8?Q", "=?utf-8?Q", nullptr, "utf-8"},
      {"=?utf-8", "=?utf-8", nullptr, "utf-8"},
      {"=?", "=?", nullptr, "(null)"},
      {"=??Q?a?=", "=??Q?a?=", nullptr, "(null)"},
      {"=? =?utf-8?Q?a?=", "=? a", nullptr, "utf-8"},  // a stray start costs no word
      {"=?big5 =?utf-8?Q?a?=", "=?big5 a", nullptr, "utf-8"},
      {"=?utf-8?Q?a\r\n b?=", "=?utf-8?Q?a\rb?=", nullptr, "utf-8"},
      {"=?=?utf-8?Q?a?=", "=?=?utf-8?Q?a?=", nullptr, "="},
      {"", "", nullptr, "(null)"},
      {"caf\xE9 (c) \"x\\\"", "caf\xE9 (c) \"x\\\"", nullptr, "(null)"},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.value);
    EXPECT_EQ(converted("utf-8", row.value), row.want);
    const Reported got = reported(row.value);
    EXPECT_EQ(got.first, row.reported ? row.reported : row.want);
    EXPECT_EQ(got.second, row.charset);
  }
}

TEST(EncodedWord, ConvertsToTheCharsetAskedFor) {
  EXPECT_EQ(converted(nullptr, "=?iso-8859-1?Q?a=E4?="), "a?");
  EXPECT_EQ(converted("ISO-8859-1", "=?utf8?Q?=C3=A4?="), "\xE4");
  EXPECT_EQ(converted("x-none", "=?utf-8?Q?=C3=A4?="), "\xC3\xA4");
  // Words in turn, one of them stateful: each is converted as if it stood alone, by converters in use or replaced.
  std::istringstream list(
      "=?iso-2022-jp?B?GyRCRnxLXBsoQg==?= =?koi8-r?Q?=C4?= =?iso-8859-2?Q?=B1?= =?iso-2022-jp?B?GyRCRnw=?= "
      "=?iso-8859-7?Q?=E1?= =?shift_jis?B?k/qWew==?= =?euc-kr?B?xdc=?= =?big5?B?pKQ=?= =?iso-8859-9?Q?=FD?= "
      "=?windows-1251?Q?=E4?= =?none?Q?=E4?= =?koi8-u?Q?=C4?=");
  std::vector<std::string> words;
  for (std::string word; list >> word;) words.push_back(word);
  std::string value, want;
  for (std::size_t round = 0; round < 40; ++round) {
    const std::string& word = words[round * round % words.size()];
    value += word;
    want += converted("utf-8", word);
  }
  EXPECT_EQ(want.substr(0, 8), "\xE6\x97\xA5\xE6\x9C\xAC\xD0\xB4");
  EXPECT_EQ(converted("utf-8", value), want);
}

TEST(EncodedWord, ChoosesTheEncodingByCharset) {
  EXPECT_EQ(encoded("us-ascii", "10 apples", 0), "10 apples");
  EXPECT_EQ(encoded(nullptr, "10 apples", 0), "10 apples");
  EXPECT_EQ(encoded("", "10 apples", 1), "=?us-ascii?Q?=31=30_apples?=");
  EXPECT_EQ(encoded("UTF8", "2:_=?~\x7F\xFF", 0), "=?utf-8?Q?2=3A=5F=3D=3F~\x7F=FF?=");
  EXPECT_EQ(encoded("ISO-8859-10", "", 0), "=?iso-8859-10?Q?\?=");
  EXPECT_EQ(encoded("ISO-2022-JP", "abc", 0), "=?ISO-2022-JP?B?YWJj?=");  // named as given
  EXPECT_EQ(encoded("euc-kr", "a", 1), "=?euc-kr?B?YQ==?=");
  EXPECT_EQ(encoded("big5", "", 1), "=?big5?B?\?=");
  EXPECT_EQ(encoded("windows-1252", "a", 0), "=?windows-1252?B?YQ==?=");
  for (const char* charset : {"utf-8?Q?a?=", "x y", "x\r\nBcc: y"}) {
    char* out = nullptr;
    EXPECT_EQ(voEncodeHeaderValue(charset, "a", &out, 0), kVoEncodeFailed) << charset;
    EXPECT_EQ(out, nullptr);
  }
}

TEST(EncodedWord, RefusesNull) {
  char text[] = "kept";
  char* charset = text;
  char* out = text;
  EXPECT_EQ(voDecodeHeaderValue("utf-8", nullptr, &out), kVoBadArgument);
  EXPECT_EQ(voDecodeHeaderValue("utf-8", "a", nullptr), kVoBadArgument);
  EXPECT_EQ(voDecodeHeaderValue(charset, out, nullptr), kVoBadArgument);
  EXPECT_EQ(charset, text);
  EXPECT_EQ(voEncodeHeaderValue("utf-8", nullptr, &out, 0), kVoBadArgument);
  EXPECT_EQ(voRfc2047DecodeQuotedPrintable(nullptr), nullptr);
  EXPECT_EQ(voRfc2047EncodeQuotedPrintable(nullptr), nullptr);
  voFreeHeaderValue(nullptr);
}

TEST(EncodedWord, TransformsSingleTextsAndCharacters) {
  EXPECT_EQ(taken(voRfc2047EncodeQuotedPrintable(" !/019AZ")), "_=21=2F=30=319AZ");
  EXPECT_EQ(taken(voRfc2047DecodeQuotedPrintable("_=c3=A4=g1=1")), " \xC3\xA4g11");
  for (int c = 0; c < 256; ++c) {
    const std::string_view digits = "0123456789abcdef";
    const std::size_t at = digits.find(vomsg::detail::toLower(static_cast<char>(c)));
    EXPECT_EQ(voRfc2047HexCharToInt(static_cast<unsigned char>(c)), at == digits.npos ? -1 : static_cast<int>(at));
  }
}

TEST(EncodedWord, TellsMixedCharsets) {
  using vomsg::detail::hasMixedCharsets;
  EXPECT_FALSE(hasMixedCharsets(nullptr));
  EXPECT_FALSE(hasMixedCharsets("a =? =?utf-8?Q?a?= =?UTF8?B?YQ==?= =?Utf-8?X?b?="));
  EXPECT_TRUE(hasMixedCharsets("=?utf-8?Q?a?= =?utf-8?Q?a?= =?koi8-r?B?YQ==?="));
  EXPECT_TRUE(hasMixedCharsets("=?utf-8?Q?a?= =?koi8-r?"));  // the charset that would be reported
}

}  // namespace
