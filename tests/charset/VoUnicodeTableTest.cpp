#include "vomsg/charset/convert/VoUnicodeTable.h"

#include <gtest/gtest.h>

#include "ConvertSupport.h"
#include "vomsg/charset/convert/VoMsgICUConverter.h"
#include "vomsg/encoding/VoUtf8.h"

namespace {

constexpr struct {
  const char* name;
  unsigned count;
} kCharsets[] = {{"iso-8859-1", 96},  {"iso-8859-2", 96},  {"iso-8859-3", 96}, {"iso-8859-4", 96}, {"iso-8859-5", 96},
                 {"iso-8859-6", 83},  {"iso-8859-7", 95},  {"iso-8859-8", 95}, {"iso-8859-9", 96}, {"iso-8859-10", 96},
                 {"iso-8859-13", 96}, {"iso-8859-14", 96}, {"iso-8859-15", 96}};

std::string utf8(unsigned code) {
  unsigned char bytes[4];
  return {reinterpret_cast<char*>(bytes), static_cast<std::size_t>(voUcs2ToUtf8(code, bytes))};
}

// The converters' rule with nothing but the look-ups, one character at a time.
Converted slowly(const VoUnicodeTable* to, const VoUnicodeTable* from, std::string_view text, bool enforce) {
  Converted result{kVoSuccess, ""};
  for (std::size_t i = 0; i < text.size() && text[i] != '\0';) {
    unsigned ucs = static_cast<unsigned char>(text[i]);
    if (from) {
      if (++i; ucs >= 0x80) ucs = from->getCode(ucs, enforce, '?');
    } else {
      i += static_cast<std::size_t>(
          voUtf8ToUcs2(reinterpret_cast<const unsigned char*>(std::string(text.substr(i)).c_str()), ucs));
    }
    const unsigned code = !to || ucs == 0 ? ucs : voConvertFromUnicode(to, ucs, enforce, '?') & 0xFF;
    if (code == 0) return {kVoConversionFailed, result.text};
    result.text += to ? std::string(1, static_cast<char>(code)) : utf8(code);
  }
  return result;
}

TEST(UnicodeTable, AgreesWithIcu) {
  for (const auto& charset : kCharsets) {
    SCOPED_TRACE(charset.name);
    const VoUnicodeTable* table = voGetUnicodeMappingTable(charset.name);
    ASSERT_TRUE(table);
    EXPECT_EQ(table->count, charset.count);
    EXPECT_EQ(table->segments[2 + charset.count], 0xFFFFFFFFu);
    VoMsgICUConverter icu("utf-8", charset.name, 1, '?');
    for (unsigned code = 0x80; code < 0x100; ++code) {
      const unsigned ucs = table->getCode(code, 0, '?');
      // ICU says U+FFFD where there is no character, and gives 0x80 to 0x9F the C1 controls, which no table covers.
      const std::string want = run(icu, std::string(1, static_cast<char>(code))).text;
      EXPECT_EQ(utf8(ucs ? ucs : code < 0xA0 ? code : 0xFFFD), want) << code;
      EXPECT_EQ(table->getCode(code, 1, '?'), ucs ? ucs : '?');
      if (ucs) {
        EXPECT_EQ(voConvertFromUnicode(table, ucs, 0, '?'), code);
      }
    }
    EXPECT_EQ(voConvertFromUnicode(table, 0x9F, 0, '?'), 0x9Fu);
    EXPECT_EQ(voConvertFromUnicode(table, 0x4E00, 0, '?'), 0u);
    EXPECT_EQ(voConvertFromUnicode(table, 0x4E00, 1, '?'), unsigned{'?'});
  }
  for (const char* name : {"iso_8859-5", "windows-1252", "iso-8859-11", "iso-8859-1 ", ""})
    EXPECT_FALSE(voGetUnicodeMappingTable(name)) << name;
  EXPECT_FALSE(voGetUnicodeMappingTable(nullptr));
}

TEST(EuropeanConverters, DoWhatTheLookUpsSay) {
  std::mt19937 random(7);
  for (const auto& charset : kCharsets)
    for (int round = 0; round < 60; ++round) {
      SCOPED_TRACE(charset.name);
      const bool enforce = round % 2 != 0;
      const char* other = kCharsets[random() % std::size(kCharsets)].name;
      const VoUnicodeTable* table = voGetUnicodeMappingTable(charset.name);
      const VoUnicodeTable* otherTable = voGetUnicodeMappingTable(other);
      // Long stretches of ASCII, all high bytes, now and then a NUL.
      std::string codes;
      for (std::size_t i = random() % 60; i > 0; --i) {
        codes.append(random() % 20, 'a');
        codes +=
            static_cast<char>(random() % 40 == 0 ? 0 : (round % 3 ? 0xA0 : 0x80) + random() % (round % 3 ? 96 : 128));
      }
      EXPECT_EQ(convert("utf-8", charset.name, codes, enforce), slowly(nullptr, table, codes, enforce));
      EXPECT_EQ(convert(other, charset.name, codes, enforce), slowly(otherTable, table, codes, enforce));
      EXPECT_EQ(convert(charset.name, "utf-8", codes, enforce), slowly(table, nullptr, codes, enforce)) << "no UTF-8";
      const std::string text = slowly(nullptr, table, codes, 1).text;
      EXPECT_EQ(convert(charset.name, "utf-8", text, enforce), slowly(table, nullptr, text, enforce));
    }
}

}  // namespace
