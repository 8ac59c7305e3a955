// The recognition of charsets once more, slow and obvious, straight from the numbers that the tables are made of; and
// the comparison of the library's with it.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "vomsg/charset/detect/VoMsgCharSetDetectorFacade.h"
#include "vomsg/charset/detect/tables/VoMsgSequenceModels.h"

namespace vomsg::test {

// The numbers in a file of tools/charset-tables; words between them are skipped.
inline const std::vector<int>& numbersIn(const std::string& file) {
  static std::map<std::string, std::vector<int>> known;
  std::vector<int>& numbers = known[file];
  if (!numbers.empty()) return numbers;
  std::ifstream in(VOMSG_TEST_DATA "/../../tools/charset-tables/" + file);
  for (std::string word; in >> word;)
    if (word.find_first_not_of("0123456789") == word.npos) numbers.push_back(std::stoi(word));
  return numbers;
}

// One of the machines; its file holds the numbers of classes and states, then class by byte, next state by state and
// class, length by class.
struct SlowMachine {
  explicit SlowMachine(const std::string& model)
      : numbers(&numbersIn("state-machines/" + model + ".txt")), classes((*numbers)[0]), states((*numbers)[1]) {}
  int at(int index) const { return numbers->at(static_cast<unsigned>(index)); }
  int step(unsigned char byte) {
    const int byteClass = at(2 + byte);
    if (state == 0) length = at(258 + states * classes + byteClass), position = 0;
    ++position;
    return state = at(258 + state * classes + byteClass);
  }

  const std::vector<int>* numbers;
  int classes, states;
  int state = 0, length = 0, position = 0;
};

struct SlowMember {
  explicit SlowMember(std::string name) : charset(std::move(name)) {}
  virtual ~SlowMember() = default;
  virtual void feed(const std::string& chunk) = 0;
  virtual float confidence() const { return state == 1 ? 1.0f : 0.0f; }

  std::string charset;  // what it claims, or has found
  int state = 0;
};

struct SlowScheme : SlowMember {
  SlowScheme() : SlowMember("") {}
  void feed(const std::string& chunk) override {
    if (chunk.starts_with("\xFE\xFF") || chunk.starts_with("\xFF\xFE")) {
      charset = chunk[0] == '\xFE' ? "UTF-16BE" : "UTF-16LE";
      state = 1;
      return;
    }
    for (const char c : chunk) {
      if ((c & 0x80) != 0 && c != '\xA0') continue;
      if (c == '\x1B' || (c == '{' && last == '~')) isEscaped = true;
      last = c;
    }
    for (std::size_t at = 0; isEscaped && at < chunk.size() && state == 0; ++at)
      for (std::size_t i = active.size(); i-- > 0 && state == 0;) {
        const int now = active[i].second.step(static_cast<unsigned char>(chunk[at]));
        if (now == 2) charset = active[i].first, state = 1;
        if (now != 1) continue;
        std::swap(active[i], active.back());
        active.pop_back();
        if (active.empty()) state = 2;
      }
  }

  bool isEscaped = false;
  char last = 0;
  std::vector<std::pair<std::string, SlowMachine>> active = {{"HZ-GB-2312", SlowMachine("HZSMModel")},
                                                             {"ISO-2022-CN", SlowMachine("gISO2022CNSMModel")},
                                                             {"ISO-2022-JP", SlowMachine("ISO2022JPSMModel")},
                                                             {"ISO-2022-KR", SlowMachine("ISO2022KRSMModel")}};
};

// What follows the characters of a machine.
struct SlowCharacters : SlowMember {
  SlowCharacters(const char* name, const std::string& model) : SlowMember(name), machine(model) {}
  virtual void complete(int b0, int b1) = 0;  // the last two bytes of a character
  virtual bool isSure() const = 0;
  void feed(const std::string& chunk) override {
    for (const char c : chunk) {
      const int before = std::exchange(last, static_cast<unsigned char>(c));
      const int now = machine.step(static_cast<unsigned char>(c));
      if (now == 0) complete(before, last);
      if (now != 1 && now != 2) continue;
      state = 3 - now;
      break;
    }
    if (isSure()) state = 1;
  }

  SlowMachine machine;
  int last = 0;
};

struct SlowUtf8 : SlowCharacters {
  SlowUtf8() : SlowCharacters("utf-8", "UTF8SMModel") {}
  void complete(int, int) override { characters += machine.length > 1; }
  bool isSure() const override { return confidence() >= 0.95f; }
  float confidence() const override { return characters < 6 ? 1.0f - std::ldexp(0.99f, -characters) : 0.99f; }

  int characters = 0;
};

struct SlowDistribution : SlowCharacters {
  using Order = int (*)(int b0, int b1);
  SlowDistribution(const std::string& model, const char* name, const std::string& language, int size, float typical,
                   Order order)
      : SlowCharacters(name, model),
        ranks(numbersIn("ranks/" + language + ".txt")),
        tableSize(size),
        ratio(typical),
        orderOf(order) {}
  void complete(int b0, int b1) override {
    const int order = orderOf(b0, b1);
    if (machine.length != 2 || order < 0 || order >= tableSize) return;
    ++total;  // beyond the ranks that are known lie rare characters
    frequent += order < static_cast<int>(ranks.size()) && ranks[static_cast<unsigned>(order)] < 512;
  }
  bool isSure() const override { return state == 0 && total > 1024 && confidence() >= 0.95f; }
  float confidence() const override {
    if (total == 0) return 0.0f;
    return static_cast<float>(frequent) / static_cast<float>(total - frequent) / ratio >= 1.0f ? 0.99f : 0.01f;
  }

  const std::vector<int>& ranks;
  int tableSize;
  float ratio;
  Order orderOf;
  int total = 0, frequent = 0;
};

// The single-byte models: the record, its tables and their files, and what they report.
struct SequenceRow {
  const SequenceModel* model;
  const unsigned char (&orders)[256];
  const unsigned char (&pairs)[4096];
  const char *map, *language;
  float ratio;
  const char* name;
};
#define SEQUENCE_ROW(model, map, language) &model, map##CharToOrderMap, language##LangModel, #map, #language
constexpr SequenceRow kSequences[] = {
    {SEQUENCE_ROW(Koi8rModel, KOI8R_, Russian), 0.976601f, "KOI8-R"},
    {SEQUENCE_ROW(Win1251Model, win1251_, Russian), 0.976601f, "windows-1251"},
    {SEQUENCE_ROW(Latin5Model, latin5_, Russian), 0.976601f, "ISO-8859-5"},
    {SEQUENCE_ROW(MacCyrillicModel, macCyrillic_, Russian), 0.976601f, "x-mac-cyrillic"},
    {SEQUENCE_ROW(Ibm866Model, IBM866_, Russian), 0.976601f, "IBM866"},
    {SEQUENCE_ROW(Ibm855Model, IBM855_, Russian), 0.976601f, "IBM855"},
    {SEQUENCE_ROW(Latin7Model, Latin7_, Greek), 0.982851f, "ISO-8859-7"},
    {SEQUENCE_ROW(Win1253Model, win1253_, Greek), 0.982851f, "windows-1253"},
    {SEQUENCE_ROW(Latin5BulgarianModel, Latin5_Bulgarian, Bulgarian), 0.969392f, "ISO-8859-5"},
    {SEQUENCE_ROW(Win1251BulgarianModel, win1251Bulgarian, Bulgarian), 0.969392f, "windows-1251"},
    {SEQUENCE_ROW(Latin2HungarianModel, Latin2_Hungarian, Hungarian), 0.947368f, "ISO-8859-2"},
    {SEQUENCE_ROW(Win1250HungarianModel, win1250Hungarian, Hungarian), 0.947368f, "windows-1250"},
    {SEQUENCE_ROW(TIS620ThaiModel, TIS620, Thai), 0.926386f, "TIS-620"},
};
#undef SEQUENCE_ROW

struct SlowSequence : SlowMember {
  explicit SlowSequence(const SequenceRow& row)
      : SlowMember(row.name),
        orders(numbersIn(std::string("letter-orders/") + row.map + "CharToOrderMap.txt")),
        pairs(numbersIn(std::string("letter-pairs/") + row.language + "LangModel.txt")),
        ratio(row.ratio) {}
  void feed(const std::string& chunk) override {
    for (const char c : chunk) {
      const int order = orders.at(static_cast<unsigned char>(c));
      chars += order < 250;
      frequent += order < 64;
      if (order < 64 && last < 64) ++sequences, likely += pairs.at(static_cast<unsigned>(last * 64 + order)) == 3;
      last = order;
    }
    if (state == 0 && sequences > 1024 && confidence() >= 0.95f) state = 1;
  }
  float confidence() const override {
    if (sequences == 0) return 0.01f;
    const long double r = static_cast<long double>(1.2f) * likely / sequences / ratio * frequent / chars;
    return r >= 1.0L ? 0.99f : static_cast<float>(r);
  }

  const std::vector<int>&orders, &pairs;
  float ratio;
  int last = 255, chars = 0, frequent = 0, sequences = 0, likely = 0;
};

struct SlowGroup : SlowMember {
  explicit SlowGroup(bool isReducing = false) : SlowMember(""), reduces(isReducing) {}
  template <class Member, class... Arguments>
  Member* add(Arguments&&... arguments) {
    members.push_back(std::make_unique<Member>(std::forward<Arguments>(arguments)...));
    return static_cast<Member*>(members.back().get());
  }
  void feed(const std::string& chunk) override {
    std::string text;
    for (std::size_t i = 0; i < chunk.size(); ++i)
      if (!reduces || (chunk[i] & 0x80) != 0 || i == 0 || (chunk[i - 1] & 0x80) != 0) text += chunk[i];
    for (const auto& member : members) {
      member->feed(text);
      if (member->state == 1 && state == 0) choice = member.get(), charset = choice->charset, state = 1;
    }
    std::erase_if(members, [](const auto& member) { return member->state == 2; });
    if (state == 0 && members.empty()) state = 2;
  }
  float confidence() const override { return choice ? choice->confidence() : 0.0f; }

  bool reduces;
  std::vector<std::unique_ptr<SlowMember>> members;
  SlowMember* choice = nullptr;
};

inline int inRows(int lead, int b0, int b1) { return 94 * (b0 - lead) + b1 - 0xA1; }

// The whole tree.
struct SlowFacade : SlowGroup {
  SlowFacade() {
    add<SlowScheme>();
    multi = add<SlowGroup>(true);
    multi->add<SlowUtf8>();
    multi->add<SlowDistribution>("Big5SMModel", "Big5", "Big5", 5376, 1.5f, [](int b0, int b1) {
      return b0 < 0xA4 ? -1 : 157 * (b0 - 0xA4) + (b1 < 0xA1 ? b1 - 0x40 : b1 - 0xA1 + 63);
    });
    multi->add<SlowDistribution>("GB18030SMModel", "GB18030", "GB2312", 3760, 1.8f,
                                 [](int b0, int b1) { return b0 < 0xB0 || b1 < 0xA1 ? -1 : inRows(0xB0, b0, b1); });
    multi->add<SlowDistribution>("EUCKRSMModel", "EUC-KR", "EUCKR", 2352, 6.0f,
                                 [](int b0, int b1) { return b0 < 0xB0 ? -1 : inRows(0xB0, b0, b1); });
    multi->add<SlowDistribution>("EUCJPSMModel", "EUC-JP", "JIS", 4368, 3.0f,
                                 [](int b0, int b1) { return b0 < 0xA0 ? -1 : inRows(0xA1, b0, b1); });
    multi->add<SlowDistribution>("EUCTWSMModel", "x-euc-tw", "EUCTW", 8102, 1.5f,
                                 [](int b0, int b1) { return b0 < 0xC4 ? -1 : inRows(0xC4, b0, b1); });
    multi->add<SlowDistribution>("SJISSMModel", "Shift_JIS", "JIS", 4368, 3.0f, [](int b0, int b1) {
      const int row = b0 >= 0x81 && b0 <= 0x9F ? b0 - 0x81 : b0 >= 0xE0 && b0 <= 0xEF ? b0 - 0xE0 + 31 : -1;
      return row < 0 ? -1 : 188 * row + b1 - 0x40 - (b1 >= 0x80);
    });
    single = add<SlowGroup>(false);
    for (const SequenceRow& row : kSequences) single->add<SlowSequence>(row);
  }

  SlowGroup *multi, *single;
};

using Session = std::unique_ptr<VoMsgDetectorSession>;

// Both trees know the same after each chunk, down to the last member; once a group has made its choice, its members are
// not asked any more.
inline void expectSame(VoMsgDetectorSession& session, const SlowMember& slow) {
  ASSERT_EQ(session.getState(), slow.state) << slow.charset;
  ASSERT_EQ(session.getConfidence(), slow.confidence()) << slow.charset;
  if (slow.state == 1) {
    ASSERT_EQ(session.getCharSet(), slow.charset);
  }
  const auto* const group = dynamic_cast<const SlowGroup*>(&slow);
  if (!group || group->state == 1) return;
  const auto& sessions = static_cast<VoMsgGroupDetectorSession&>(session).getSessions();
  ASSERT_EQ(sessions.size(), group->members.size());
  for (std::size_t i = 0; i < sessions.size(); ++i) expectSame(*sessions[i], *group->members[i]);
}

// Feeds both the text until they decide; `nextSize` says how long the next chunk is.
template <class NextSize>
void compare(VoMsgCharSetDetector& detector, SlowMember&& slow, const std::string& text, NextSize nextSize) {
  const Session session(detector.createSession());
  for (std::size_t at = 0; at < text.size() && slow.state == 0;) {
    const std::string chunk = text.substr(at, nextSize());
    const std::vector<char> block(chunk.begin(), chunk.end());  // of its exact size
    ASSERT_EQ(detector.handleData(block.data(), static_cast<unsigned>(block.size()), session.get()), session.get());
    slow.feed(chunk);
    ASSERT_NO_FATAL_FAILURE(expectSame(*session, slow)) << at;
    at += chunk.size();
  }
}

template <class NextSize>
void compareTrees(const std::string& text, NextSize nextSize) {
  static VoMsgCharSetDetectorFacade facade;
  compare(facade, SlowFacade(), text, nextSize);
}

inline std::string times(const std::string& text, unsigned count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

}  // namespace vomsg::test
