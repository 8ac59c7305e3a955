#include "vomsg/charset/convert/VoCharsetName.h"

#include <gtest/gtest.h>

#include <string>

#include "vomsg/charset/convert/tables/VoCharsetTable.h"

namespace {

TEST(CharsetName, IsCanonicalInAnyCase) {
  constexpr struct {
    const char* name;
    const char* canonical;  // null: passes through
  } kRows[] = {
      {"MS_KANJI", "Shift_jis"}, {"X-SJIS", "Shift_jis"}, {"ks_c_5601", "euc-kr"},      {"cn-gb", "gb2312"},
      {"JIS", "iso-2022-jp"},    {"hz-gb", "hz-gb-2312"}, {"ISO_8859-5", "iso_8859-5"}, {"sjis1", nullptr},
      {"x-euc", nullptr},        {"iso-8859-5", nullptr}, {"x-sjis sjis", nullptr},     {"", nullptr},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_STREQ(voGetFQNCharsetName(row.name), row.canonical ? row.canonical : row.name);
    if (!row.canonical) {
      EXPECT_EQ(voGetFQNCharsetName(row.name), row.name);
    }
  }
  EXPECT_EQ(voGetFQNCharsetName(nullptr), nullptr);
  EXPECT_TRUE(voIsEqualCharsetName("Utf8", "UTF-8"));
  EXPECT_TRUE(voIsEqualCharsetName("x-own", "X-OWN"));
  EXPECT_FALSE(voIsEqualCharsetName("iso-8859-5", "iso_8859-5"));
  EXPECT_FALSE(voIsEqualCharsetName(nullptr, nullptr));
}

TEST(CharsetName, CodePageGivesTheFirstMatch) {
  EXPECT_STREQ(voCodepageToCharset(50225), "iso-2022-cn");
  EXPECT_STREQ(voCodepageToCharset(-1), "iso-8859-10");
  EXPECT_STREQ(voCodepageToCharset(1252), "iso-8859-1");
  EXPECT_STREQ(voCodepageToCharset(28585), "iso_8859-5");
  EXPECT_EQ(voCodepageToCharset(28595), nullptr);
  EXPECT_EQ(voCodepageToCharset(0), nullptr);
}

TEST(CharsetName, EveryCanonicalNameIsRight) {
  for (const VoCharsetRecord* record = gCharsetTable; record->name; ++record)
    EXPECT_TRUE(voIsRightCharsetName(record->name)) << record->name;
  for (const char* wrong : {"", "no-such-charset", "/etc/passwd", "..\\utf-8", "utf-8/", "utf-8\n", "utf\x7F-8"})
    EXPECT_FALSE(voIsRightCharsetName(wrong)) << wrong;
  EXPECT_FALSE(voIsRightCharsetName(nullptr));
  EXPECT_FALSE(voIsRightCharsetName(std::string(100'000, 'x').c_str()));
}

TEST(CharsetName, KnowsSingleBytesAndUnicode) {
  for (const char* name : {"us-ascii", "koi8-r", "iso_8859-5", "Windows-1258"})
    EXPECT_TRUE(voIsSinglebyteCharset(name));
  for (const char* name : {"utf-8", "jis", "sjis", "no-such-charset", ""}) EXPECT_FALSE(voIsSinglebyteCharset(name));
  EXPECT_FALSE(voIsSinglebyteCharset(nullptr));
  for (const char* name : {"UTF-16LE", "utf32", "Unicode", "utf16xyz"}) EXPECT_TRUE(voIsUnicode(name)) << name;
  for (const char* name : {"ucs-2", "utf-8", "utf-7", "unicode-1", ""}) EXPECT_FALSE(voIsUnicode(name)) << name;
  EXPECT_FALSE(voIsUnicode(nullptr));
}

}  // namespace
