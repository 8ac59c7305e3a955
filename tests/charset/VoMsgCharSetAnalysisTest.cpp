// Real texts in every charset that the models know, and what the analysis must not do.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>

#include "SlowAnalysis.h"
#include "tests/support/MessageFixture.h"
#include "tests/support/Tools.h"
#include "vomsg/charset/convert/VoMsgIcuHandle.h"
#include "vomsg/charset/detect/VoMsgCharSetAnalysis.h"
#include "vomsg/filter/VoMsgPlainTextFilter.h"
#include "vomsg/filter/VoMsgTextFormatFilterPool.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace {

using namespace vomsg::test;

struct Result {
  std::string charset = "unknown";
  std::size_t bytes = 0;
  bool operator==(const Result&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Result& result) {
  return out << result.charset << " after " << result.bytes;
}

Result analyse(const std::string& text, const char* format = "text/plain") {
  const auto block = std::make_unique<char[]>(text.size());
  std::memcpy(block.get(), text.data(), text.size());
  const VoMsgMemoryResource resource(block.get(), static_cast<unsigned>(text.size()), nullptr, nullptr);
  const std::unique_ptr<VoMsgBufferedReader> reader(resource.getInputStream(VoMsgResourceLocator::dataPart));
  char* name = nullptr;
  VoMsgCharSetAnalysis::Evidence evidence;
  EXPECT_EQ(VoMsgCharSetAnalysis::getInstance()->analysisText(reader.get(), format, name, evidence), name);
  const std::unique_ptr<char, decltype(&std::free)> owner(name, &std::free);
  EXPECT_EQ(evidence.detector != nullptr, name != nullptr);
  return {name ? name : "unknown", evidence.bytes};
}

// In blocks of 4096 bytes; the name of a single-byte charset waits for the first byte above ASCII.
Result analyseSlowly(const std::string& text) {
  SlowFacade tree;
  const SlowMember* const single = tree.members.back().get();
  bool isAscii = true;
  for (std::size_t at = 0; at < text.size(); at += 4096) {
    const std::string block = text.substr(at, 4096);
    for (const char c : block) isAscii = isAscii && (c & 0x80) == 0;
    if (tree.state == 0) tree.feed(block);
    if (tree.state == 1 && !(isAscii && tree.choice == single)) return {tree.charset, at + block.size()};
  }
  return {"unknown", text.size()};
}

std::string inCharset(const std::string& text, const char* charset) {
  const auto from = vomsg::detail::openIcu("utf-8");
  const auto to = vomsg::detail::openIcu(charset);
  std::string out;
  if (!from || !to) return {};
  vomsg::detail::substituteInIcu(*to, '?');
  EXPECT_EQ(vomsg::detail::transcodeWithIcu(*from, *to, text, out), kVoSuccess) << charset;
  return out;
}

TEST(CharSetAnalysis, RecognisesRealTexts) {
  struct Row {
    const char* language;
    const char* charset;
    const char* want;
    bool isReadable = true;  // as the body of a message that declares no charset
  };
  constexpr Row kRows[] = {
      {"russian", "koi8-r", "KOI8-R"},
      {"russian", "windows-1251", "windows-1251"},
      {"russian", "iso-8859-5", "ISO-8859-5"},
      {"russian", "ibm866", "IBM866"},
      {"russian", "ibm855", "IBM855"},
      {"russian", "utf-8", "utf-8"},
      {"bulgarian", "windows-1251", "windows-1251"},
      {"bulgarian", "iso-8859-5", "ISO-8859-5"},
      {"greek", "iso-8859-7", "ISO-8859-7"},
      {"hungarian", "iso-8859-2", "ISO-8859-2"},
      {"simplified_chinese", "gb18030", "GB18030"},
      {"simplified_chinese", "hz", "HZ-GB-2312"},
      {"simplified_chinese", "iso-2022-cn", "ISO-2022-CN", false},
      {"traditional_chinese", "big5", "Big5"},
      {"traditional_chinese", "euc-tw", "x-euc-tw"},
      {"japanese", "euc-jp", "EUC-JP"},
      {"japanese", "shift_jis", "Shift_JIS"},
      {"japanese", "iso-2022-jp", "ISO-2022-JP"},
      {"korean", "euc-kr", "EUC-KR"},
      {"korean", "iso-2022-kr", "ISO-2022-KR"},
      {"french", "utf-8", "utf-8"},
      // Where the letters have the same codes, the earlier member is named.
      {"greek", "windows-1253", "ISO-8859-7"},
      {"hungarian", "windows-1250", "ISO-8859-2"},
      {"russian", "x-mac-cyrillic", "windows-1251", false},
      // A letter misses what the Thai model asks for by one pair in 1287, the minutes of a meeting have it.
      {"thai", "tis-620", "unknown", false},
      {"thai_report", "tis-620", "TIS-620"},
      // A language without a model, taken for another.
      {"french", "windows-1252", "ISO-8859-2", false},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(std::string(row.language) + " in " + row.charset);
    const std::string text = readFile(std::string(VOMSG_TEST_DATA "/texts/") + row.language + ".txt");
    ASSERT_FALSE(text.empty());
    // Four times, because some texts alone have too few characters.
    const std::string bytes = times(inCharset(text, row.charset), 4);
    EXPECT_EQ(analyse(bytes), (Result{row.want, std::strcmp(row.want, "unknown") == 0 ? bytes.size() : 4096}));
    int code = 0;
    const bool isRead =
        bytesOf(MessageFixture("Subject: x\r\n\r\n" + bytes)->getTextContent(code, nullptr, "utf-8")) == times(text, 4);
    EXPECT_EQ(isRead, row.isReadable);
    // The end of a block cuts the text's beginning in all places, then something in its middle, and nothing changes.
    for (std::size_t before = 4080; before <= 4097; ++before) {
      const std::string later = std::string(before, '1') + bytes;
      EXPECT_EQ(analyse(later), analyseSlowly(later)) << before;
      compareTrees(bytes, [&] { return before - 3000; });
    }
  }
}

TEST(CharSetAnalysis, KnowsItsLimits) {
  struct Row {
    const char* name;
    std::string text;
    const char* want;
  };
  const std::string ascii = times("Just a line of plain text that any language could hold.\r\n", 2000);
  const std::string hungarianAscii = inCharset(readFile(VOMSG_TEST_DATA "/texts/hungarian.txt"), "us-ascii");
  const std::string plainHungarian = times(hungarianAscii, 20);
  const Row rows[] = {
      {"nothing", "", "unknown"},
      {"ASCII", ascii, "unknown"},
      {"Hungarian letters without accents", plainHungarian, "unknown"},
      {"as they were taken for Hungarian before the first other byte", ascii + "\u00E9\u00E9\u00E9\u00E9\u00E9",
       "ISO-8859-2"},
      {"a byte-order mark", "\xFF\xFEh", "UTF-16LE"},
      {"the other one", "\xFE\xFFh", "UTF-16BE"},
      {"half a byte-order mark", "\xFE", "unknown"},
      {"a byte-order mark that begins the second block", std::string(4096, 'x') + "\xFF\xFE", "UTF-16LE"},
      {"one that straddles blocks", std::string(4095, 'x') + "\xFF\xFE", "unknown"},
      {"ESC $ B", "\x1B$B", "ISO-2022-JP"},
      {"ESC ( B", "\x1B(B", "ISO-2022-CN"},
      {"ESC $ ) A", "\x1B$)A", "ISO-2022-CN"},
      {"ESC $ ) C", "\x1B$)C", "ISO-2022-KR"},
      {"HZ", "~{<:Ky2;S{#,NpJ)l6HK!#~}", "HZ-GB-2312"},
      {"HZ, its escape cut by the block: \"~}\" comes unexpected", std::string(4095, 'x') + "~{<:~} ~{<:~}", "unknown"},
      {"four characters of UTF-8", "\u00E9 \u00E9 \u00E9 \u00E9", "unknown"},
      {"five", "\u00E9 \u00E9 \u00E9 \u00E9 \u00E9", "utf-8"},
      {"five, then a wrong byte in the block", "\u00E9\u00E9\u00E9\u00E9\u00E9 \xFF", "utf-8"},
      {"a wrong byte before the fifth", "\u00E9\u00E9\u00E9\u00E9 \xFF \u00E9\u00E9\u00E9", "unknown"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(analyse(row.text).charset, row.want);
  }
  EXPECT_EQ(analyse("\u00E9\u00E9\u00E9\u00E9\u00E9", "text/html").charset, "unknown");
  EXPECT_EQ(analyse("\u00E9\u00E9\u00E9\u00E9\u00E9", nullptr).charset, "unknown");
  char* charset = nullptr;
  EXPECT_EQ(VoMsgCharSetAnalysis::getInstance()->analysisText(nullptr, "text/plain", charset), nullptr);
}

TEST(CharSetAnalysis, KnowsRandomBytes) {
  std::minstd_rand random(7);
  for (unsigned round = 0; round < 300; ++round) {
    std::string text(random() % 20000, '\0');
    const unsigned low = round % 3 == 0 ? 0 : 0x80;
    for (char& c : text) c = static_cast<char>(low + random() % (256 - low));
    EXPECT_EQ(analyse(text), analyseSlowly(text));
  }
}

TEST(TextFilters, ThePoolChoosesByType) {
  VoMsgTextFormatFilterPool pool;
  for (const char* type : {"text/plain", "TEXT/PLAIN", "text/plain; charset=x", "text/plain x"})
    EXPECT_NE(pool.getFilter(type), nullptr) << type;
  for (const char* type : {"text/html", "text/plainx", "text/plai", ""}) EXPECT_EQ(pool.getFilter(type), nullptr);
  EXPECT_EQ(pool.getFilter(nullptr), nullptr);
}

TEST(TextFilters, APlainTextIsCopied) {
  VoMsgPlainTextFilter filter;
  const std::unique_ptr<VoMsgTextFilterSession> session(filter.filterText("abc", 3, nullptr));
  ASSERT_NE(session, nullptr);
  for (const std::string& text : {std::string("a\0c", 3), std::string("longer than before"), std::string("x")}) {
    EXPECT_EQ(filter.filterText(text.data(), static_cast<unsigned>(text.size()), session.get()), session.get());
    EXPECT_EQ(std::string(session->getRecentContext(), session->getRecentContextSize()), text);
    EXPECT_NE(session->getRecentContext(), text.data());
  }
  EXPECT_EQ(session->getCharSet(), nullptr);
  filter.filterText("", 0, session.get());
  EXPECT_EQ(session->getRecentContext(), nullptr);
  EXPECT_EQ(session->getRecentContextSize(), 0u);
  EXPECT_EQ(session->setRecentContext(::strdup("own"), 3), 0);
  filter.filterText("abc", 3, session.get());
  EXPECT_EQ(std::string(session->getRecentContext(), 3), "abc");
  EXPECT_EQ(session->releaseRecentContext(), 0);
  EXPECT_EQ(session->getRecentContext(), nullptr);
}

}  // namespace
