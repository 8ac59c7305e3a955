#include "vomsg/header/VoMsgRfc2231.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "vomsg/header/VoMsgHeaderField.h"

namespace {

using Parameters = std::vector<std::pair<std::string, std::string>>;

std::unique_ptr<VoMsgHeaderField> fieldOf(const Parameters& parameters) {
  auto field = std::make_unique<VoMsgHeaderField>("Content-Disposition", "attachment");
  for (const auto& [name, value] : parameters) field->appendRawParameter(name.c_str(), value.c_str(), false, nullptr);
  return field;
}

TEST(Rfc2231, PutsValuesTogether) {
  struct Row {
    Parameters parameters;
    const char* want;     // of "f" in UTF-8; null: none
    const char* charset;  // that getParameterValueEx reports
  };
  const Row rows[] = {
      {{{"f*0*", "us-ascii'en'a%20b"}, {"f*1", "c"}}, "a bc", "us-ascii"},
      {{{"f*", "utf-8''x%41"}}, "xA", "utf-8"},
      {{{"f*0", "a"}, {"f*2", "c"}}, "ac", "us-ascii"},
      {{{"F*00*", "iso-8859-1''%FC"}, {"f*1*", "%e4"}}, "\xC3\xBC\xC3\xA4", "iso-8859-1"},
      {{{"f*10", "j"}, {"f*9", "i"}, {"f*1a", "?"}, {"f*0", "h"}}, "hij", "us-ascii"},
      {{{"f*0", "a"}, {"f*000", "b"}, {"f*1", "c"}}, "ac", "us-ascii"},  // the first of a number counts
      {{{"f*0", "a"}, {"f*", "utf-8''whole"}}, "whole", "utf-8"},
      {{{"f", "plain"}, {"f*0", "pieces"}}, "pieces", "us-ascii"},
      {{{"f*1a", "x"}}, nullptr, nullptr},
      {{{"f*1a", "x"}, {"f", "plain"}}, "plain", nullptr},
      {{{"f*", "no-such-charset''a%FF"}}, "a\xFF", "no-such-charset"},
      {{{"f*1*", "utf-8''a"}, {"f*2*", "''%41"}}, "aA", "utf-8"},  // only piece 0 declares what is converted from
      {{{"f*", "utf-8'a"}}, "utf-8'a", "utf-8"},                   // half a prefix is text
      {{{"f*", "utf-8''"}}, "utf-8''", "utf-8"},                   // so is one that nothing follows
      {{{"f*0*", "utf-8''it's %2"}}, "it's ", "utf-8"},            // a cut escape is dropped
      {{{"fx*0", "a"}, {"f0", "b"}}, nullptr, nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.parameters[0].first + "=" + row.parameters[0].second);
    const auto field = fieldOf(row.parameters);
    for (int call = 0; call < 2; ++call) EXPECT_STREQ(field->getParameterValue("f", "utf-8"), row.want);
    const char* charset = "?";
    field->getParameterValueEx("f", charset);
    EXPECT_STREQ(charset, row.charset);
  }
}

// Reading piece by piece, number by number, as the single steps offer it.
TEST(Rfc2231, SortedPiecesAreThoseOfTheWalk) {
  std::mt19937 random(2231);
  constexpr const char* kNames[] = {"f*0",  "f*1",  "f*2", "f*00",  "f*9",  "f*10",
                                    "f*11", "f*1a", "f**", "f*007", "f*1*x"};
  for (int round = 0; round < 3000; ++round) {
    Parameters parameters;
    for (unsigned i = 0; i < 1 + random() % 6; ++i)
      parameters.emplace_back(kNames[random() % std::size(kNames)], std::string(1, static_cast<char>('a' + i)));
    const auto field = fieldOf(parameters);
    std::string want;
    std::string number = "0";
    bool isEncoded = false;
    while (const char* piece = field->getSeqRawParameterValue("f", number, &isEncoded)) {
      want += piece;
      VoMsgHeaderField::_incrementString(number);
    }
    std::string got;
    EXPECT_EQ(field->getConvertRFC2231Value("f", "us-ascii", got), !want.empty());
    ASSERT_EQ(got, want) << round;
  }
}

TEST(Rfc2231, Numbers) {
  constexpr const char* kNames[][2] = {{"f*0", "0"}, {"f*000", "0"}, {"f*010*", "10"}, {"f*1a", ""},   {"f*", ""},
                                       {"f**", ""},  {"f", ""},      {"f*-1", ""},     {"f*2*3*", "2"}};
  for (const auto& [name, want] : kNames) EXPECT_EQ(VoMsgHeaderField::getSequenceNo(name), want) << name;
  EXPECT_EQ(VoMsgHeaderField::getSequenceNo(("f*" + std::string(9000, '7')).c_str()), std::string(8192, '7'));
  for (auto [number, next] : Parameters{{"0", "1"}, {"9", "10"}, {"199", "200"}, {"", ""}, {"99", "100"}}) {
    EXPECT_EQ(VoMsgHeaderField::_isSmallSequenceNo(number, next), !next.empty());
    EXPECT_FALSE(VoMsgHeaderField::_isSmallSequenceNo(next, number));
    std::string zeros = "00" + number;
    VoMsgHeaderField::_cutFirstZero(zeros);
    EXPECT_EQ(zeros, number.empty() ? "0" : number);
    VoMsgHeaderField::_incrementString(number);
    EXPECT_EQ(number, next);
  }
}

TEST(Rfc2231, HostileNumbersEndSoon) {
  const auto wide = fieldOf({{"f*0", "a"}, {"f*1" + std::string(4000, '0'), "c"}, {"f*999999999", "b"}});
  EXPECT_STREQ(wide->getParameterValue("f", "utf-8"), "abc");
  Parameters many;
  for (int i = 100000; i-- > 0;) many.emplace_back("f*" + std::to_string(i) + "*", i ? "%78" : "utf-8''y");
  const auto field = fieldOf(many);
  EXPECT_EQ(field->getParameterValue("f", "utf-8"), "y" + std::string(99999, 'x'));
  EXPECT_EQ(field->removeParameter("F"), kVoSuccess);
  EXPECT_EQ(field->countParameter(), 0u);
}

TEST(Rfc2231, ChangesAreSeen) {
  const auto field = fieldOf({{"f*0", "a"}});
  EXPECT_STREQ(field->getParameterValue("f", "utf-8"), "a");
  field->appendParameter("f*1", "b", nullptr, nullptr);
  EXPECT_STREQ(field->getParameterValue("f", "utf-8"), "ab");
  field->setParameterValue("f", "c", "us-ascii", nullptr);
  EXPECT_STREQ(field->getParameterValue("f", "utf-8"), "c");
}

}  // namespace
