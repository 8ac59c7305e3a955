#include "vomsg/foundation/VoMsgBoundary.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "vomsg/foundation/VoMsgBoundaryTable.h"

namespace {

using vomsg::detail::BoundaryMatch;
using vomsg::detail::BoundaryTable;

TEST(Boundary, ClassifiesLinesAgainstOneBoundary) {
  struct Row {
    const char* line;
    unsigned terminator;
    const char* boundary;
    int want;
  };
  constexpr Row kRows[] = {
      {"--abc  ", 0, "abc", 1},    {"--abc--", 0, "abc", 2}, {"--abc-- \t\r\n", 2, "abc", 2},
      {"--ABC", 0, "abc", 0},      {"--abc-", 0, "abc", 0},  {"--abcd", 0, "abc", 0},
      {"--abc\r\n", 1, "abc", 0},  {"-abc", 0, "abc", 0},    {nullptr, 0, "abc", 0},
      {"--", 0, nullptr, 1},       {"--\n", 1, "", 1},       {"----", 0, nullptr, 2},
      {"--", 2, nullptr, 0},       {"--abc ", 0, "abc ", 0}, {"--abc--", 0, "abc--", 1},
      {"--abc \r\n", 2, "abc", 1},
  };
  for (const Row& row : kRows)
    EXPECT_EQ(voGetBoundaryType(row.line, row.terminator, row.boundary), row.want) << (row.line ? row.line : "null");
}

TEST(Boundary, ClassifiesLinesAgainstAList) {
  struct Row {
    const char* line;
    unsigned terminator;
    int want;
  };
  constexpr Row kRows[] = {
      {nullptr, 0, 3},       {"\r\n", 2, 1},      {"", 0, 1},        {"x", 1, 1},    {"\r", 0, 1},   {"x", 2, 0},
      {"   ", 0, 4},         {" \t\r\n", 2, 4},   {"\nx", 0, 4},     {" \nx", 0, 4}, {" x\n", 1, 0}, {"text\r\n", 2, 0},
      {"--outer\r\n", 2, 2}, {"--inner--", 0, 2}, {"--other", 0, 0},
  };
  const VoMsgBoundaryList list = {"inner", "outer"};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.line ? row.line : "null");
    EXPECT_EQ(voGetTerminatorType(row.line, row.terminator, &list), row.want);
    EXPECT_EQ(voGetTerminatorType(row.line, row.terminator, nullptr), row.want == 2 ? 0 : row.want);
  }
}

// Short boundaries over three bytes repeat, are prefixes of one another and end in "--"; the stack goes up and down
// past the size where the table begins to hash.
TEST(BoundaryTable, AnswersAsTheListDoes) {
  std::mt19937 random(1);
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  const auto word = [&](unsigned longest) {
    std::string text;
    for (unsigned length = below(longest + 1); length > 0; --length) text += "-a "[below(3)];
    return text;
  };
  BoundaryTable table;
  std::vector<std::string> stack;
  for (int step = 0; step < 200000; ++step) {
    const bool grow = step / 300 % 2 == 0 ? below(8) != 0 : below(8) == 0;
    if (step % 50000 == 49999) {
      table.clear();
      stack.clear();
    } else if (grow && stack.size() < 70) {
      stack.push_back(word(5));
      table.push(stack.back());
    } else if (step % 7 != 0) {
      if (!stack.empty()) stack.pop_back();
      table.pop();
    }
    ASSERT_EQ(table.size(), stack.size());
    const std::string line = std::string(below(9) ? "--" : "-") + word(9);
    BoundaryMatch want;
    for (std::size_t depth = stack.size(); depth-- > 0 && want.type == kVoBoundaryNone;)
      want = {voGetBoundaryType(line.c_str(), 0, stack[depth].c_str()), depth};
    const BoundaryMatch got = table.match(std::string(line));
    ASSERT_EQ(got.type, want.type) << "[" << line << "] at " << step;
    if (want.type != kVoBoundaryNone) {
      ASSERT_EQ(got.depth, want.depth) << "[" << line << "] at " << step;
    }
  }
}

}  // namespace
