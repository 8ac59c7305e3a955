// The detectors one by one: against slow references that read the exported tables directly, and at the edges of what
// they decide.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "vomsg/charset/detect/VoMsgDistributionDetector.h"
#include "vomsg/charset/detect/VoMsgFrequenceTables.h"
#include "vomsg/charset/detect/VoMsgMBCSGroupDetector.h"
#include "vomsg/charset/detect/VoMsgSBCSGroupDetector.h"
#include "vomsg/charset/detect/VoMsgSequenceDetector.h"

namespace {

using Session = std::unique_ptr<VoMsgDetectorSession>;

struct Verdict {
  int state;
  float confidence;
  bool operator==(const Verdict&) const = default;
};

// Feeds the text in chunks of `chunk` bytes, each in a block of its exact size; stops once something is decided.
Verdict verdict(VoMsgCharSetDetector& detector, const std::string& text, std::size_t chunk) {
  const Session session(detector.createSession());
  for (std::size_t at = 0; at < text.size() && session->getState() == 0; at += chunk) {
    const std::vector<char> block(text.begin() + static_cast<std::ptrdiff_t>(at),
                                  text.begin() + static_cast<std::ptrdiff_t>(std::min(at + chunk, text.size())));
    EXPECT_EQ(detector.handleData(block.data(), static_cast<unsigned>(block.size()), session.get()), session.get());
  }
  return {session->getState(), session->getConfidence()};
}

Verdict slowDistribution(const VoMsgFrequenceTable& table, const SMModel& model, const std::string& text) {
  VoMsgCodingStateMachine machine(&model);
  int total = 0, frequent = 0, state = 0;
  for (std::size_t i = 0; i < text.size() && state == 0; ++i) {
    const std::uint32_t now = machine.nextState(static_cast<unsigned char>(text[i]));
    if (now == 1 || now == 2) state = now == 1 ? 2 : 1;
    if (now != 0 || machine.currentCharLen != 2) continue;
    const char c[2] = {i > 0 ? text[i - 1] : '\0', text[i]};
    const int order = table.evaluateChar(c);
    if (order < 0 || order >= static_cast<int>(table.tableSize)) continue;
    ++total;
    frequent += table.freqOrder[order] < 512;
  }
  const float ratio = static_cast<float>(frequent) / static_cast<float>(total - frequent) / table.typicalRatio;
  const float confidence = total == 0 ? 0.0f : ratio >= 1.0f ? 0.99f : 0.01f;
  if (state == 0 && total >= 1025 && confidence >= 0.95f) state = 1;
  return {state, confidence};
}

struct Encoding {
  VoMsgFrequenceTable* (*makeTable)();
  const SMModel* model;
};
const Encoding kEncodings[] = {
    {[]() -> VoMsgFrequenceTable* { return new VoMsgBig5FrequenceTable; }, &Big5SMModel},
    {[]() -> VoMsgFrequenceTable* { return new VoMsgGB2312FrequenceTable; }, &GB18030SMModel},
    {[]() -> VoMsgFrequenceTable* { return new VoMsgEUCKRFrequenceTable; }, &EUCKRSMModel},
    {[]() -> VoMsgFrequenceTable* { return new VoMsgEUCJPFrequenceTable; }, &EUCJPSMModel},
    {[]() -> VoMsgFrequenceTable* { return new VoMsgEUCTWFrequenceTable; }, &EUCTWSMModel},
    {[]() -> VoMsgFrequenceTable* { return new VoMsgSJISFrequenceTable; }, &SJISSMModel},
    // A machine with more states than the fast loop takes.
    {[]() -> VoMsgFrequenceTable* { return new VoMsgEUCTWFrequenceTable; }, &UTF8SMModel},
};

TEST(DistributionDetector, AgreesWithASlowReference) {
  std::minstd_rand random(3);
  for (const Encoding& encoding : kEncodings) {
    SCOPED_TRACE(encoding.model->name);
    const std::unique_ptr<VoMsgFrequenceTable> table(encoding.makeTable());
    VoMsgDistributionDetector detector(encoding.makeTable(), VoMsgCodingStateMachine(encoding.model));
    for (unsigned pair = 0; pair < 65536 + 256; ++pair) {
      std::string text(1, static_cast<char>(pair));
      if (pair < 65536) text.insert(text.begin(), static_cast<char>(pair >> 8));
      ASSERT_EQ(verdict(detector, text, 2), slowDistribution(*table, *encoding.model, text)) << pair;
    }
    // Long runs that the machine accepts: only characters that lead back to its start.
    for (unsigned round = 0; round < 6; ++round) {
      std::string text;
      VoMsgCodingStateMachine machine(encoding.model);
      while (text.size() < 6000) {
        VoMsgCodingStateMachine tried = machine;
        const auto byte = static_cast<unsigned char>(random() % (round % 2 ? 256 : 64) + (round % 2 ? 0 : 0xA0));
        const std::uint32_t state = tried.nextState(byte);
        if (state == 1 || state == 2) continue;
        machine = tried;
        text += static_cast<char>(byte);
      }
      const Verdict want = slowDistribution(*table, *encoding.model, text);
      for (const std::size_t chunk : {text.size(), std::size_t{1}, std::size_t{1023}, std::size_t{4096}})
        EXPECT_EQ(verdict(detector, text, chunk), want) << chunk;
    }
  }
}

// Characters that are frequent or rare in a table, by its own ranks.
std::string characterOf(const VoMsgFrequenceTable& table, bool isFrequent) {
  for (unsigned pair = 0xB0A1; pair < 0xF7FF; ++pair) {
    const char c[2] = {static_cast<char>(pair >> 8), static_cast<char>(pair)};
    const int order = table.evaluateChar(c);
    if ((pair & 0xFF) < 0xA1 || order < 0 || order >= static_cast<int>(table.tableSize)) continue;
    if ((table.freqOrder[order] < 512) == isFrequent) return std::string(c, 2);
  }
  return {};
}

std::string times(const std::string& text, int count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

TEST(DistributionDetector, DecidesAtTheRatioAndTheNumberItShould) {
  VoMsgDistributionDetector detector(new VoMsgGB2312FrequenceTable, VoMsgCodingStateMachine(&GB18030SMModel));
  const VoMsgGB2312FrequenceTable table;
  const std::string frequent = characterOf(table, true);
  const std::string rare = characterOf(table, false);
  EXPECT_EQ(verdict(detector, times(frequent, 1024), 1 << 20), (Verdict{0, 0.99f}));
  EXPECT_EQ(verdict(detector, times(frequent, 1025), 1 << 20), (Verdict{1, 0.99f}));
  EXPECT_EQ(verdict(detector, times(frequent, 1800) + times(rare, 1000), 1 << 20), (Verdict{1, 0.99f}));
  EXPECT_EQ(verdict(detector, times(frequent, 1799) + times(rare, 1000), 1 << 20), (Verdict{0, 0.01f}));
  EXPECT_EQ(verdict(detector, times(frequent, 2000) + "\xFF", 1 << 20).state, 2);
}

// Characters beyond the published ranks are rare ones, and counted.
TEST(DistributionDetector, TheLastOrdersOfEucTwAreRare) {
  const VoMsgEUCTWFrequenceTable table;
  VoMsgCharCounts counts = table.countChars("\xFD\xCF\xFD\xD9\xFD\xDA\xFD\xFE\xC4\xA1", 5);  // orders 5404, 5414, ...
  EXPECT_EQ(counts.total, 5u);
  for (std::uint32_t order = 5376; order < table.tableSize; ++order) EXPECT_GE(table.freqOrder[order], 512);
}

Verdict slowSequence(const SequenceModel& model, const std::string& text) {
  int seqs = 0, chars = 0, frequent = 0, counters[4] = {};
  unsigned last = 255;
  for (const char c : text) {
    const unsigned order = model.charToOrderMap[static_cast<unsigned char>(c)];
    chars += order < 250;
    frequent += order < 64;
    if (order < 64 && last < 64) {
      ++seqs;
      ++counters[model.precedenceMatrix[last * 64 + order]];
    }
    last = order;
  }
  if (seqs < 1) return {0, 0.01f};
  const long double r =
      static_cast<long double>(1.2f) * counters[3] / seqs / model.typicalPositiveRatio * frequent / chars;
  const float confidence = r >= 1.0L ? 0.99f : static_cast<float>(r);
  return {seqs >= 1025 && confidence >= 0.95f ? 1 : 0, confidence};
}

TEST(SequenceDetector, AgreesWithASlowReference) {
  std::minstd_rand random(5);
  VoMsgSBCSGroupDetector group;
  ASSERT_EQ(group.getMembers().size(), 13u);
  for (VoMsgCharSetDetector* member : group.getMembers()) {
    const SequenceModel& model = *static_cast<VoMsgSequenceDetector*>(member)->getModel();
    SCOPED_TRACE(model.charsetName);
    std::string letters;
    for (unsigned byte = 0; byte < 256; ++byte)
      if (model.charToOrderMap[byte] < 64) letters += static_cast<char>(byte);
    for (unsigned round = 0; round < 8; ++round) {
      // Walks that follow likely pairs more or less often.
      std::string text;
      while (text.size() < 70000 || round == 7) {
        const char c = random() % 50 < round ? static_cast<char>(random() % 256) : letters[random() % letters.size()];
        const unsigned last = text.empty() ? 255u : model.charToOrderMap[static_cast<unsigned char>(text.back())];
        const unsigned order = model.charToOrderMap[static_cast<unsigned char>(c)];
        const bool isLikely = order < 64 && last < 64 && model.precedenceMatrix[last * 64 + order] == 3;
        if (isLikely || random() % 8 == 0) text += c;
        if (round == 7 && text.size() >= 1500) break;
      }
      const Verdict want = slowSequence(model, text);
      EXPECT_EQ(verdict(*member, text, text.size()), want);
      const std::string begin = text.substr(0, 900);  // too short to be decided
      EXPECT_EQ(verdict(*member, begin, 7), slowSequence(model, begin));
    }
  }
}

TEST(SequenceDetector, DecidesAtThePairItShould) {
  VoMsgSequenceDetector detector(&Koi8rModel);
  const std::string text = times("\xCE\xC1", 1000);  // "na" and "an" are both usual
  EXPECT_EQ(verdict(detector, text.substr(0, 1025), 1 << 20).state, 0);
  EXPECT_EQ(verdict(detector, text.substr(0, 1026), 1 << 20).state, 1);
}

TEST(GroupDetector, TheEarliestMemberOfAPassIsTheChoice) {
  // Frequent in several of the two-byte encodings at once.
  VoMsgMBCSGroupDetector group;
  std::minstd_rand random(1);
  unsigned rivals = 0;
  for (unsigned round = 0; round < 400; ++round) {
    const std::string c = {static_cast<char>(0xB0 + random() % 0x18), static_cast<char>(0xA1 + random() % 94)};
    const std::string text = times(c, 1100);
    const Session session(group.createSession());
    group.handleData(text.data(), static_cast<unsigned>(text.size()), session.get());
    const char* first = nullptr;
    for (VoMsgDetectorSession* member : static_cast<VoMsgGroupDetectorSession*>(session.get())->getSessions()) {
      if (member->getState() != VoMsgDetectorSession::kFound) continue;
      rivals += first != nullptr;
      if (first == nullptr) first = member->getCharSet();
    }
    ASSERT_STREQ(session->getCharSet(), first);
  }
  EXPECT_GT(rivals, 0u);
}

TEST(GroupDetector, IsOutWhenAllMembersAre) {
  VoMsgMBCSGroupDetector group;
  const Session session(group.createSession());
  group.handleData("\xFF\xFF\xFF", 3, session.get());
  EXPECT_EQ(session->getState(), VoMsgDetectorSession::kNotMe);
  EXPECT_EQ(group.handleData("", 0, nullptr), nullptr);
}

TEST(Models, HaveTheirSizesAndNames) {
  struct Row {
    const SMModel* model;
    unsigned classes;
    const char* name;
  };
  const Row rows[] = {{&HZSMModel, 6, "HZ-GB-2312"},         {&gISO2022CNSMModel, 10, "ISO-2022-CN"},
                      {&ISO2022CNSMModel, 9, "ISO-2022-CN"}, {&ISO2022JPSMModel, 8, "ISO-2022-JP"},
                      {&ISO2022KRSMModel, 6, "ISO-2022-KR"}, {&Big5SMModel, 5, "Big5"},
                      {&EUCJPSMModel, 6, "EUC-JP"},          {&EUCKRSMModel, 4, "EUC-KR"},
                      {&EUCTWSMModel, 7, "x-euc-tw"},        {&GB18030SMModel, 4, "GB18030"},
                      {&SJISSMModel, 6, "Shift_JIS"},        {&UCS2BESMModel, 6, "UTF-16BE"},
                      {&UCS2LESMModel, 6, "UTF-16LE"},       {&UTF8SMModel, 16, "UTF-8"}};
  for (const Row& row : rows) {
    EXPECT_STREQ(row.model->name, row.name);
    EXPECT_EQ(row.model->classFactor, row.classes);
    for (unsigned byte = 0; byte < 256; ++byte) EXPECT_LT(row.model->classTable.at(byte), row.classes);
  }
  for (const unsigned char* pairs :
       {RussianLangModel, BulgarianLangModel, GreekLangModel, HungarianLangModel, ThaiLangModel})
    EXPECT_LE(*std::max_element(pairs, pairs + 4096), 3);
}

}  // namespace
