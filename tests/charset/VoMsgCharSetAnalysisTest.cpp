// Real texts in every charset that the models know, and what the analysis must not do.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>

#include "SlowAnalysis.h"
#include "tests/support/MessageFixture.h"
#include "tests/support/Tools.h"
#include "vomsg/charset/convert/VoMsgIcuStage.h"
#include "vomsg/charset/detect/VoMsgCharSetAnalysis.h"
#include "vomsg/filter/VoMsgPlainTextFilter.h"
#include "vomsg/filter/VoMsgTextFormatFilterPool.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace {

using namespace vomsg::test;

using Result = std::pair<std::string, std::size_t>;  // the charset, and after how many bytes

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
  bool isAscii = true;
  for (std::size_t at = 0; at < text.size(); at += 4096) {
    const std::string block = text.substr(at, 4096);
    for (const char c : block) isAscii = isAscii && (c & 0x80) == 0;
    if (tree.state == 0) tree.feed(block);
    if (tree.state == 1 && !(isAscii && tree.choice == tree.single)) return {tree.charset, at + block.size()};
  }
  return {"unknown", text.size()};
}

std::string inCharset(const std::string& text, const char* charset) {
  std::string out;
  EXPECT_EQ(vomsg::detail::newIcuStage(charset, "utf-8", {true, '?'})->convert(text, true, out), kVoSuccess) << charset;
  return out;
}

// `isReadable`: it comes out right as the body of a message that declares no charset.
void expectRecognised(const std::string& language, const char* charset, const std::string& want,
                      bool isReadable = true) {
  SCOPED_TRACE(language + " in " + charset);
  // Four times, because some texts alone have too few characters.
  const std::string text = times(readFile(VOMSG_TEST_DATA "/texts/" + language + ".txt"), 4);
  const std::string bytes = inCharset(text, charset);
  EXPECT_EQ(analyse(bytes), (Result{want, want == "unknown" ? bytes.size() : 4096}));
  int code = 0;
  MessageFixture message("Subject: x\r\n\r\n" + bytes);
  EXPECT_EQ(bytesOf(message->getTextContent(code, nullptr, "utf-8")) == text, isReadable);
  // The end of a block cuts the text's beginning in all places, then something in its middle, and nothing changes.
  for (std::size_t before = 4080; before <= 4097; ++before) {
    const std::string later = std::string(before, '1') + bytes;
    EXPECT_EQ(analyse(later), analyseSlowly(later)) << before;
    compareTrees(bytes, [&] { return before - 3000; });
  }
}

TEST(CharSetAnalysis, RecognisesRealTexts) {
  const struct {
    const char* language;
    std::vector<const char*> charsets;
  } kRows[] = {
      {"russian", {"KOI8-R", "windows-1251", "ISO-8859-5", "IBM866", "IBM855", "utf-8"}},
      {"bulgarian", {"windows-1251", "ISO-8859-5"}},
      {"greek", {"ISO-8859-7"}},
      {"hungarian", {"ISO-8859-2"}},
      {"thai_report", {"TIS-620"}},
      {"simplified_chinese", {"GB18030", "HZ-GB-2312"}},
      {"traditional_chinese", {"Big5"}},
      {"japanese", {"EUC-JP", "Shift_JIS", "ISO-2022-JP"}},
      {"korean", {"EUC-KR", "ISO-2022-KR"}},
      {"french", {"utf-8"}},
  };
  for (const auto& row : kRows)
    for (const char* charset : row.charsets) expectRecognised(row.language, charset, charset);
  expectRecognised("traditional_chinese", "euc-tw", "x-euc-tw");
  expectRecognised("simplified_chinese", "ISO-2022-CN", "ISO-2022-CN", false);
  // Where the letters have the same codes, the earlier member is named.
  expectRecognised("greek", "windows-1253", "ISO-8859-7");
  expectRecognised("hungarian", "windows-1250", "ISO-8859-2");
  expectRecognised("russian", "x-mac-cyrillic", "windows-1251", false);
  // A letter misses what the Thai model asks for by one pair in 1287; above, the minutes of a meeting have it.
  expectRecognised("thai", "tis-620", "unknown", false);
  // A language without a model, taken for another.
  expectRecognised("french", "windows-1252", "ISO-8859-2", false);
}

TEST(CharSetAnalysis, KnowsItsLimits) {
  const std::string ascii = times("Just a line of plain text that any language could hold.\r\n", 2000);
  const std::string hungarian = inCharset(readFile(VOMSG_TEST_DATA "/texts/hungarian.txt"), "us-ascii");
  const struct {
    const char* name;
    std::string text;
    const char* want;
  } kRows[] = {
      {"nothing", "", "unknown"},
      {"ASCII", ascii, "unknown"},
      {"Hungarian letters without accents", times(hungarian, 20), "unknown"},
      {"as they were taken for Hungarian before the first other byte", ascii + "\u00E9\u00E9\u00E9\u00E9\u00E9",
       "ISO-8859-2"},
      {"an escape after it", ascii + "\x1B$B", "unknown"},
      {"a byte-order mark", "\xFF\xFEh", "UTF-16LE"},
      {"the other one", "\xFE\xFFh", "UTF-16BE"},
      {"half a byte-order mark", "\xFE", "unknown"},
      {"a byte-order mark that begins the second block", std::string(4096, 'x') + "\xFF\xFE", "UTF-16LE"},
      {"one that straddles blocks", std::string(4095, 'x') + "\xFF\xFE", "unknown"},
      {"ESC $ B", "\x1B$B", "ISO-2022-JP"},
      {"ESC ( B", "\x1B(B", "ISO-2022-CN"},
      {"ESC $ ) A", "\x1B$)A", "ISO-2022-CN"},
      {"ESC $ ) C", "\x1B$)C", "ISO-2022-KR"},
      {"HZ, its escape cut by the block: \"~}\" comes unexpected", std::string(4095, 'x') + "~{<:~} ~{<:~}", "unknown"},
      {"four characters of UTF-8", "\u00E9 \u00E9 \u00E9 \u00E9", "unknown"},
      {"five", "\u00E9 \u00E9 \u00E9 \u00E9 \u00E9", "utf-8"},
      {"five, then a wrong byte in the block", "\u00E9\u00E9\u00E9\u00E9\u00E9 \xFF", "utf-8"},
      {"a wrong byte before the fifth", "\u00E9\u00E9\u00E9\u00E9 \xFF \u00E9\u00E9\u00E9", "unknown"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(analyse(row.text).first, row.want);
  }
  EXPECT_EQ(analyse("\u00E9\u00E9\u00E9\u00E9\u00E9", "text/html").first, "unknown");
  EXPECT_EQ(analyse("\u00E9\u00E9\u00E9\u00E9\u00E9", nullptr).first, "unknown");
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
}

}  // namespace
