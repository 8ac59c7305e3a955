#include "vomsg/charset/convert/VoMsgConverterFactory.h"

#include <gtest/gtest.h>

#include <typeinfo>

#include "ConvertSupport.h"
#include "vomsg/vomsg.h"

namespace {

TEST(ConverterFactory, PicksTheFirstClassThatAccepts) {
  const struct {
    const char *from, *to;
    const std::type_info& want;
  } kRows[] = {
      {"iso-8859-1", "ISO-8859-15", typeid(VoMsgToISO8859EuConverter)},
      {"iso-8859-5", "UTF8", typeid(VoMsgToUTF8EuConverter)},
      {"utf-8", "iso-8859-13", typeid(VoMsgUTF8ToISO8859EuConverter)},
      {"iso_8859-5", "utf-8", typeid(VoMsgICUConverter)},  // the canonical spelling has no table
      {"windows-1252", "utf-8", typeid(VoMsgICUConverter)},
      {"CN-GB", "UTF8", typeid(VoMsgEUCToUTF8CnConverter)},
      {"utf-8", "euc-cn", typeid(VoMsgUTF8ToEUCCnConverter)},
      {"gb2312", "HZ-GB", typeid(VoMsgGBToHZCnConverter)},
      {"hz-gb-2312", "gb2312", typeid(VoMsgHZToGBCnConverter)},
      {"hz-gb-2312", "utf-8", typeid(VoMsgHZToUTF8CnConverter)},
      {"utf-8", "hz-gb-2312", typeid(VoMsgICUConverter)},
      {"BIG5", "utf-8", typeid(VoMsgBIG5ToUTF8TwConverter)},
      {"utf-8", "big5", typeid(VoMsgUTF8ToBIG5TwConverter)},
      {"jis", "x-euc-jp", typeid(VoMsgJISToEUCJpConverter)},
      {"euc-jp", "iso-2022-jp", typeid(VoMsgEUCToJISJpConverter)},
      {"iso-2022-jp", "SHIFT_JIS", typeid(VoMsgJISToSJISJpConverter)},
      {"sjis", "iso-2022-jp", typeid(VoMsgSJISToJISJpConverter)},
      {"ms_kanji", "euc-jp", typeid(VoMsgSJISToEUCJpConverter)},
      {"euc-jp", "Shift_jis", typeid(VoMsgEUCToSJISJpConverter)},
      {"iso-2022-jp", "ascii", typeid(VoMsgJISToASCIIJpConverter)},
      {"euc-jp", "us-ascii", typeid(VoMsgICUConverter)},
      {"iso-2022-jp", "utf-8", typeid(VoMsgICUConverter)},
      {"utf-8", "iso-2022-jp", typeid(VoMsgICUConverter)},
      {"utf-8", "utf8", typeid(VoMsgICUConverter)},
      {"ucs-2", "utf-8", typeid(VoMsgICUConverter)},
      {"iso-2022-cn", "utf-8", typeid(void)},
      {"utf-16", "utf-8", typeid(void)},
      {"utf-8", "UTF-32BE", typeid(void)},
      {"utf-8", "../utf-8", typeid(void)},
      {"utf-8", "", typeid(void)},
      {"utf-8", nullptr, typeid(void)},
      {nullptr, "utf-8", typeid(void)},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << (row.from ? row.from : "null") << " to " << (row.to ? row.to : "null"));
    const ConverterPtr converter = makeConverter(row.to, row.from);
    const VoMsgCharsetConverter* const got = converter.get();
    EXPECT_STREQ(got ? typeid(*got).name() : typeid(void).name(), row.want.name());
  }
  EXPECT_EQ(VoMsgConverterFactory::getInstance()->destoryConverter(nullptr), kVoSuccess);
  // ICU opens such names, but they do not fit into the converter.
  const std::string longName = "utf-8," + std::string(58, 'x');
  EXPECT_FALSE(makeConverter(longName.c_str(), "koi8-r"));
  EXPECT_TRUE(makeConverter(longName.substr(0, 63).c_str(), "koi8-r"));
}

TEST(ConvertCharset, ReportsTheWholeLength) {
  VoErrorCode code = 0;
  char out[4] = {'x', 'x', 'x', 'x'};
  EXPECT_EQ(voConvertCharset(out, 1, "utf-8", "\xE9\xE9", "iso-8859-1", &code), 5);
  EXPECT_EQ(code, kVoSuccess);
  EXPECT_EQ(std::string_view(out, 4), std::string_view("\0xxx", 4));
  EXPECT_EQ(voConvertCharset(out, 4, "utf-8", "a\xE9\xE9", "iso-8859-1", &code), 6);
  EXPECT_STREQ(out, "a\xC3\xA9");
  EXPECT_EQ(voConvertCharset(out, 0, "us-ascii", "\xE9", "iso-8859-1", &code), 2);
  EXPECT_STREQ(out, "a\xC3\xA9");
  EXPECT_EQ(voConvertCharset(out, 4, "us-ascii", "\xE9", "iso-8859-1", &code), 2);
  EXPECT_STREQ(out, "?");

  EXPECT_EQ(voConvertCharset(out, 4, "no-such-charset", "a", "utf-8", &code), 0);
  EXPECT_EQ(code, kVoConversionFailed);
  EXPECT_EQ(voConvertCharset(out, 4, "utf-8", nullptr, "utf-8", &code), 0);
  EXPECT_EQ(code, kVoBadArgument);
  EXPECT_EQ(voConvertCharset(out, 4, "utf-8", "a", "koi8-r", nullptr), 0);
}

}  // namespace
