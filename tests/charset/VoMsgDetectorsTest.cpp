// The detectors against slow references, and at the edges of what they decide.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "SlowAnalysis.h"
#include "vomsg/charset/detect/VoMsgDistributionDetector.h"
#include "vomsg/charset/detect/VoMsgFrequenceTables.h"
#include "vomsg/charset/detect/VoMsgMBCSGroupDetector.h"
#include "vomsg/charset/detect/VoMsgSequenceDetector.h"

namespace {

using namespace vomsg::test;

const struct {
  const char* model;
  const SMModel* machine;
  const char* name;
  std::vector<unsigned> lengths;  // by class
} kMachines[] = {
    {"HZSMModel", &HZSMModel, "HZ-GB-2312", {0, 0, 0, 0, 0, 0}},
    {"gISO2022CNSMModel", &gISO2022CNSMModel, "ISO-2022-CN", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"ISO2022CNSMModel", &ISO2022CNSMModel, "ISO-2022-CN", {0, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"ISO2022JPSMModel", &ISO2022JPSMModel, "ISO-2022-JP", {0, 0, 0, 0, 0, 0, 0, 0}},
    {"ISO2022KRSMModel", &ISO2022KRSMModel, "ISO-2022-KR", {0, 0, 0, 0, 0, 0}},
    {"Big5SMModel", &Big5SMModel, "Big5", {0, 1, 1, 2, 0}},
    {"EUCJPSMModel", &EUCJPSMModel, "EUC-JP", {2, 2, 2, 3, 1, 0}},
    {"EUCKRSMModel", &EUCKRSMModel, "EUC-KR", {0, 1, 2, 0}},
    {"EUCTWSMModel", &EUCTWSMModel, "x-euc-tw", {0, 0, 1, 2, 2, 2, 3}},
    {"GB18030SMModel", &GB18030SMModel, "GB18030", {0, 1, 2, 0}},
    {"SJISSMModel", &SJISSMModel, "Shift_JIS", {0, 1, 1, 2, 0, 0}},
    {"UCS2BESMModel", &UCS2BESMModel, "UTF-16BE", {2, 2, 2, 0, 2, 2}},
    {"UCS2LESMModel", &UCS2LESMModel, "UTF-16LE", {2, 2, 2, 2, 2, 2}},
    {"UTF8SMModel", &UTF8SMModel, "UTF-8", {0, 1, 0, 0, 0, 0, 2, 3, 3, 3, 4, 4, 5, 5, 6, 6}},
};

TEST(Machines, StepAsTheirNumbersSay) {
  std::minstd_rand random(3);
  for (const auto& row : kMachines) {
    SCOPED_TRACE(row.model);
    EXPECT_STREQ(row.machine->name, row.name);
    ASSERT_EQ(row.machine->classFactor, row.lengths.size());
    EXPECT_TRUE(std::equal(row.lengths.begin(), row.lengths.end(), row.machine->charLenTable));
    const auto compare = [&](const std::string& text) {
      VoMsgCodingStateMachine machine(row.machine);
      SlowMachine slow(row.model);
      for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        ASSERT_EQ(static_cast<int>(machine.nextState(byte)), slow.step(byte)) << testing::PrintToString(text);
        ASSERT_EQ(static_cast<int>(machine.currentCharLen), slow.length);
        ASSERT_EQ(static_cast<int>(machine.currentBytePos), slow.position);
      }
    };
    for (unsigned pair = 0; pair < 65536; ++pair)
      compare({static_cast<char>(pair >> 8), static_cast<char>(pair)});  // and each byte alone on the way
    for (unsigned round = 0; round < 200; ++round) {
      std::string text;
      while (text.size() < 100)
        text += random() % 4 ? static_cast<char>(random()) : "\x1B$()*~{ABGH\x0E\x0F"[random() % 14];
      compare(text);
    }
  }
}

// Up to `size` bytes that the machine takes without an error; some have states that nothing but an error leaves.
std::string accepted(const SMModel* model, std::minstd_rand& random, std::size_t size) {
  std::string text;
  const unsigned low = random() % 2 ? 0xA0 : 0;
  VoMsgCodingStateMachine machine(model);
  for (std::size_t tries = 50 * size; tries > 0 && text.size() < size; --tries) {
    const VoMsgCodingStateMachine before = machine;
    const auto byte = static_cast<unsigned char>(random() % 8 ? low + random() % (256 - low) : random());
    if (machine.nextState(byte) == VoMsgCodingStateMachine::kFailed)
      machine = before;
    else
      text += static_cast<char>(byte);
  }
  return text;
}

// Letters of a model that follow each other in the usual way, more or less.
std::string likely(const SequenceModel& model, std::minstd_rand& random, std::size_t size) {
  std::string text;
  const auto noise = 1 + random() % 12;  // never none: some letters have no usual follower
  for (unsigned last = 255; text.size() < size;) {
    const auto byte = static_cast<unsigned char>(random());
    const unsigned order = model.charToOrderMap[byte];
    const bool isUsual = order < 64 && (last >= 64 || model.precedenceMatrix[last * 64 + order] == 3);
    if (!isUsual && random() % 256 >= noise) continue;
    text += static_cast<char>(byte);
    last = order;
  }
  return text;
}

TEST(Detectors, AgreeWithASlowReference) {
  std::minstd_rand random(5);
  for (unsigned pair = 0; pair < 65536; pair += 5)
    ASSERT_NO_FATAL_FAILURE(compareTrees({static_cast<char>(pair >> 8), static_cast<char>(pair)}, [] { return 2; }));
  for (const char* text : {"~\xA0{", "~\xC3{"}) compareTrees(text, [] { return 3; });
  for (unsigned count = 0; count < 8; ++count) compareTrees(times("\u00E9", count), [] { return 99; });
  for (unsigned round = 0; round < 240; ++round) {
    SCOPED_TRACE(round);
    std::string text;
    if (round % 4 == 0) text = accepted(kMachines[round / 4 % std::size(kMachines)].machine, random, 6000);
    if (round % 4 == 1) text = likely(*kSequences[round / 4 % std::size(kSequences)].model, random, 4000);
    // Two characters over and over are frequent in several encodings at once.
    if (round % 4 == 2) text = times(accepted(&EUCKRSMModel, random, 2 + random() % 4), 1100);
    if (round % 4 == 3) {
      const std::string_view alphabet = "\x1B$()*~{}ABC\x0E \n<:Ky\xA0\xC3\xA9";
      const std::size_t skipped = round / 4 % 2;  // without ESC "~{" comes to be the first escape
      for (auto i = random() % 3000; i > 0; --i) text += alphabet[skipped + random() % (alphabet.size() - skipped)];
    }
    const std::size_t longest = round % 3 == 0 ? 60 : round % 3 == 1 ? 1500 : 9000;
    compareTrees(text, [&] { return random() % (longest + 1); });
  }
}

// A model's machine may have more states than the fast loop of these detectors takes.
TEST(DistributionDetector, TakesLargeMachinesToo) {
  std::minstd_rand random(9);
  VoMsgDistributionDetector detector(new VoMsgEUCKRFrequenceTable, VoMsgCodingStateMachine(&UTF8SMModel));
  const auto order = [](int b0, int b1) { return b0 < 0xB0 ? -1 : inRows(0xB0, b0, b1); };
  const std::string text = accepted(&UTF8SMModel, random, 9000);
  for (const std::size_t chunk : {std::size_t{1}, std::size_t{1025}, text.size()})
    compare(detector, SlowDistribution("UTF8SMModel", "", "EUCKR", 2352, 6.0f, order), text, [&] { return chunk; });
}

int stateAfter(VoMsgCharSetDetector& detector, const std::string& text) {
  const Session session(detector.createSession());
  detector.handleData(text.data(), static_cast<unsigned>(text.size()), session.get());
  return session->getState();
}

TEST(DistributionDetector, DecidesAtTheNumberAndTheRatioItShould) {
  const std::unique_ptr<VoMsgFrequenceTable> tables[] = {
      std::make_unique<VoMsgBig5FrequenceTable>(),  std::make_unique<VoMsgGB2312FrequenceTable>(),
      std::make_unique<VoMsgEUCKRFrequenceTable>(), std::make_unique<VoMsgEUCJPFrequenceTable>(),
      std::make_unique<VoMsgEUCTWFrequenceTable>(), std::make_unique<VoMsgSJISFrequenceTable>()};
  constexpr unsigned kFrequentToThousandRare[] = {1500, 1800, 6000, 3000, 1500, 3000};
  VoMsgMBCSGroupDetector group;
  const SlowFacade slow;
  for (std::size_t i = 0; i < std::size(tables); ++i) {
    const auto& start = static_cast<const SlowDistribution&>(*slow.multi->members[i + 1]);
    VoMsgCharSetDetector& detector = *group.getMembers()[i + 1];
    SCOPED_TRACE(start.charset);
    std::string frequent, rare;
    for (unsigned pair = 0; pair < 65536; ++pair) {
      const std::string c = {static_cast<char>(pair >> 8), static_cast<char>(pair)};
      const int order = start.orderOf(static_cast<int>(pair >> 8), static_cast<int>(pair & 0xFF));
      ASSERT_EQ(tables[i]->evaluateChar(c.data()), order) << pair;
      ASSERT_EQ(tables[i]->countChars(c.data(), 1).total, order >= 0 && order < start.tableSize) << pair;
      SlowDistribution tried = start;
      tried.feed(c);
      if (tried.machine.state == 0 && tried.total == 1) (tried.frequent == 1 ? frequent : rare) = c;
    }
    EXPECT_EQ(stateAfter(detector, times(frequent, 1024)), 0);
    EXPECT_EQ(stateAfter(detector, times(frequent, 1025)), 1);
    const std::string most = times(frequent, kFrequentToThousandRare[i] - 1) + times(rare, 1000);
    EXPECT_EQ(stateAfter(detector, most), 0);
    EXPECT_EQ(stateAfter(detector, most + frequent), 1);
    EXPECT_EQ(stateAfter(detector, times(frequent, 2000) + "\xFF\xFF"), 2);
  }
}

TEST(SequenceDetector, DecidesAtTheNumberAndTheShareItShould) {
  for (const SequenceRow& row : kSequences) {
    SCOPED_TRACE(row.name);
    const SequenceModel& model = *row.model;
    VoMsgSequenceDetector detector(&model);
    // Two letters that like to follow each other both ways, and one that is not frequent.
    char pair[2] = {}, rare = 0;
    for (unsigned a = 0; a < 256; ++a) {
      const unsigned order = model.charToOrderMap[a];
      if (order >= 64 && order < 250) rare = static_cast<char>(a);
      for (unsigned b = 0; b < 256 && order < 64; ++b) {
        const unsigned other = model.charToOrderMap[b];
        if (other < 64 && model.precedenceMatrix[order * 64 + other] == 3 &&
            model.precedenceMatrix[other * 64 + order] == 3)
          pair[0] = static_cast<char>(a), pair[1] = static_cast<char>(b);
      }
    }
    const std::string text = times(std::string(pair, 2), 1000);
    EXPECT_EQ(stateAfter(detector, text.substr(0, 1025)), 0);
    EXPECT_EQ(stateAfter(detector, text.substr(0, 1026)), 1);
    // All pairs are usual ones, so the share of frequent letters decides.
    const auto most = static_cast<std::size_t>(2000 * (1.2 / row.ratio / 0.95 - 1));
    EXPECT_EQ(stateAfter(detector, text + std::string(most, rare)), 1);
    EXPECT_EQ(stateAfter(detector, text + std::string(most + 1, rare)), 0);
  }
}

TEST(SequenceModels, HaveTheirPartsAndNames) {
  for (const SequenceRow& row : kSequences) {
    SCOPED_TRACE(row.name);
    EXPECT_STREQ(row.model->charsetName, row.name);
    EXPECT_EQ(row.model->charToOrderMap, row.orders);
    EXPECT_EQ(row.model->precedenceMatrix, row.pairs);
    EXPECT_EQ(row.model->typicalPositiveRatio, row.ratio);
    EXPECT_EQ(row.model->keepEnglishLetter, std::string_view(row.language) == "Hungarian");
    EXPECT_LE(*std::max_element(row.pairs, row.pairs + 4096), 3);
  }
}

TEST(Detectors, NeedASession) {
  VoMsgCharSetDetectorFacade facade;
  for (const auto& member : facade.getMembers()) EXPECT_EQ(member->handleData("x", 1, nullptr), nullptr);
  const Session session(facade.handleData("", 0, nullptr));  // the root makes its own
  ASSERT_NE(session, nullptr);
  auto& group = static_cast<VoMsgGroupDetectorSession&>(*session);
  EXPECT_EQ(group.setPrefSession(nullptr), -1);
  EXPECT_EQ(group.setPrefSession(group.getSessions()[2].get()), 0);
  EXPECT_EQ(group.setPrefSession(group.getSessions()[0].get()), -1);
}

}  // namespace
