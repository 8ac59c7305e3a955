#include "vomsg/edit/VoMsgDisclaimerDispatch.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace vomsg::test {
namespace {

using namespace vomsg::detail;

// Answers as told, and notes who was asked: T text, H html, C calendar, N new body, W wrap, X fresh wrap, A attach; in
// lower case when asked with "utf-8" instead of what the caller prefers.
class Script : public DisclaimerSteps {
 public:
  Script(bool alternative, bool calendar, std::map<char, VoErrorCode> answers)
      : mAlternative(alternative), mCalendar(calendar), mAnswers(std::move(answers)) {}
  bool hasAlternative() override { return mAlternative; }
  bool hasTextCalendar() override { return mCalendar; }
  VoErrorCode run(DisclaimerStep step, const char* charset) override {
    char name = "THCNWXA"[static_cast<unsigned>(step)];
    if (std::string(charset) == "utf-8") name = static_cast<char>(name + ('a' - 'A'));
    asked += name;
    const auto answer = mAnswers.find(name);
    return answer == mAnswers.end() ? kVoSuccess : answer->second;
  }
  std::string asked;

 private:
  bool mAlternative;
  bool mCalendar;
  std::map<char, VoErrorCode> mAnswers;
};

constexpr VoErrorCode kD = kVoConversionFailed;
constexpr VoErrorCode kF = kVoDisclaimerRefused;
constexpr VoErrorCode k10 = kVoDisclaimerCopyFailed;

struct Row {
  int option;
  char shape;  // t: text, a: alternative, c: calendar
  std::map<char, VoErrorCode> answers;
  const char* asked;
  VoErrorCode want;
  const char* prefer = "iso-8859-1";
};

TEST(DisclaimerDispatch, OptionShapeAndAnswersChooseTheSteps) {
  const Row rows[] = {
      {0, 't', {}, "T", kVoSuccess},
      {0, 't', {{'T', kD}}, "Tt", kVoSuccess},
      {0, 't', {{'T', kD}, {'t', kD}}, "TtN", kVoSuccess},
      {0, 't', {{'T', k10}, {'t', k10}}, "TtX", kVoSuccess},
      {0x80, 't', {{'T', k10}, {'t', k10}}, "TtA", kVoSuccess},
      {0, 't', {{'T', kD}, {'t', kD}, {'N', kF}}, "TtN", kF},
      {0, 't', {{'t', kD}}, "tn", kVoSuccess, "utf-8"},  // not twice
      {0, 't', {{'T', kD}}, "TN", kVoSuccess, "UTF-8"},
      {0, 't', {{'T', kF}}, "T", kF},
      {0x08, 't', {{'T', kF}}, "TX", kVoSuccess},
      {0, 't', {{'T', kVoNoMemory}}, "T", kVoNoMemory},
      {0, 'a', {}, "X", kVoSuccess},
      {0x80, 'a', {}, "A", kVoSuccess},
      {4, 'a', {}, "H", kVoSuccess},
      {4, 'a', {{'H', kD}, {'h', kD}}, "HhX", kVoSuccess},
      {4, 'a', {{'H', kD}, {'h', kD}, {'X', kD}}, "HhXC", kVoSuccess},
      {4, 'a', {{'H', k10}, {'h', k10}, {'X', k10}, {'C', kD}}, "HhXCX", k10},
      {4, 'a', {{'H', kF}}, "H", kF},
      {0x0C, 'a', {{'H', kF}}, "HC", kVoSuccess},
      {0x0C, 'a', {{'H', kF}, {'C', kF}}, "HCX", kVoSuccess},
      {0x8C, 'a', {{'H', kF}, {'C', kD}}, "HCA", kVoSuccess},
      {0, 'c', {}, "C", kVoSuccess},
      {0, 'c', {{'C', kD}}, "Cc", kVoSuccess},
      {0, 'c', {{'C', kD}, {'c', k10}}, "CcX", kVoSuccess},
      {0, 'c', {{'C', kF}}, "C", kF},
      {0x08, 'c', {{'C', kF}}, "CX", kVoSuccess},
      {1, 'a', {}, "N", kVoSuccess},
      {1, 't', {{'N', kF}}, "N", kF},
      {0x09, 't', {{'N', kF}}, "NX", kVoSuccess},
      {1, 't', {{'N', kD}}, "N", kD},
      {2, 't', {}, "W", kVoSuccess},
      {0x82, 't', {}, "A", kVoSuccess},
      {3, 'c', {}, "X", kVoSuccess},
      {0x83, 't', {{'A', kD}}, "A", kD},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.option) + row.shape + " " + row.asked);
    Script script(row.shape == 'a', row.shape == 'c', row.answers);
    EXPECT_EQ(dispatchDisclaimer(script, row.option, row.prefer), row.want);
    EXPECT_EQ(script.asked, row.asked);
  }
}

TEST(DisclaimerDispatch, ShapesForceModes) {
  struct Plan {
    int option;
    DisclaimerShape shape;
    int want;
    int position;  // asked for at the top
  };
  constexpr DisclaimerShape kAlternative{true, false, false};
  constexpr DisclaimerShape kTnef{false, false, true};
  constexpr DisclaimerShape kTnefInvitation{false, true, true};
  const Plan plans[] = {
      {0, {}, 0, 1},          {0, kAlternative, 3, 1}, {0x98, kAlternative, 0x83, 1}, {0x04, kAlternative, 0x04, 1},
      {1, kTnef, 3, 1},       {0x8C, kTnef, 0x83, 1},  {0x40, kTnef, 1, 2},           {0xC2, kTnef, 0x81, 2},
      {0x10, kTnef, 0x10, 1}, {0x50, kTnef, 0x50, 1},  {0, kTnefInvitation, 0, 1},
  };
  for (const Plan& row : plans) {
    SCOPED_TRACE(row.option);
    const DisclaimerPlan plan = planDisclaimer(row.option, kVoDisclaimerTop, row.shape);
    EXPECT_EQ(plan.option, row.want);
    EXPECT_EQ(plan.position, row.position);
    EXPECT_EQ(plan.htmlIsWrapped, row.shape.isAlternative && !(row.option & 4));
  }
}

}  // namespace
}  // namespace vomsg::test
