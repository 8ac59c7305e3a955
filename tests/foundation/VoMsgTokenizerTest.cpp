#include "vomsg/foundation/VoMsgTokenizer.h"

#include <gtest/gtest.h>

#include <string>

#include "vomsg/foundation/VoMsgCString.h"

namespace {

using vomsg::detail::copyCString;

// Everything read from `state` on, a token as its id and <text>, and the state at the end.
std::string tokensOf(const char* text, int state, const VoMsgTokenTableSet* set = nullptr) {
  const auto exact = copyCString(text);
  VoMsgTokenizer tokenizer(exact.get(), set);
  tokenizer.setState(state);
  std::string all, token;
  int id;
  do {
    id = tokenizer.getNextToken();
    tokenizer.getTokenString(token);
    all += std::to_string(id) + "<" + token + ">";
  } while (id != 0);
  return all + std::to_string(tokenizer.getState());
}

TEST(Tokenizer, ReadsEachStateByItsTable) {
  struct Row {
    const char* text;
    int state;
    const char* want;
  };
  constexpr Row kRows[] = {
      {"text/plain; charset=\"x\"", 0, "100<text/plain>1<;>10< >100<charset>8<=>4<\">100<x>4<\">0<>0"},
      {"=?a?b?=c:\t=", 0, "5<=?>100<a>7<?>100<b>6<?=>100<c>9<:>10<\t>8<=>0<>0"},
      {"(a(b\\))c)d", 0, "2<(>300<a>2<(>300<b\\)>3<)>300<c>3<)>100<d>0<>0"},
      {"\\(\\", 0, "100<\\>2<(>300<\\>0<>2"},  // a backslash escapes nothing outside
      {"a\rb\nc\r", 0, "100<a\rb\nc>11<\r>0<>0"},
      {"\r\n", 0, "100<\r>12<\n>0<>0"},
      {"a;(\\\"b\"c", 1, "100<a;(\\\"b>4<\">100<c>0<>0"},
      {"a\\", 1, "100<a\\>0<>1"},
      {"a\\;=b;c", 3, "100<a\\;=b>1<;>100<c>0<>0"},
      {"a;b", 99, "100<a;b>0<>99"},  // no such state, no tokens
  };
  for (const Row& row : kRows) EXPECT_EQ(tokensOf(row.text, row.state), row.want) << row.text;
  EXPECT_EQ(VoMsgTokenizer(nullptr, nullptr).getNextToken(), 0);
}

TEST(Tokenizer, TriesTheEntriesOfAHostsTableInOrder) {
  // Prefixes of one another, an entry that only the end matches, one that is never reached.
  static constexpr VoMsgTokenEntry entries[] = {
      {7, "xx", 2, 0}, {4, "a", 3, 1}, {7, "x", 1, 0}, {9, "xa", 2, 0}, {0, "", 0, 0}};
  constexpr VoMsgTokenState states[] = {{1, entries, nullptr}, {0, entries + 4, nullptr}};
  const VoMsgTokenTableSet set{states, 2};
  EXPECT_EQ(tokensOf("abxxxa", 0, &set), "100<ab>7<xx>7<x>4<a>0<>1");
  EXPECT_EQ(tokensOf("a\\a", 0, &set), "100<a\\a>0<>0");
  EXPECT_EQ(tokensOf("xax", 1, &set), "100<xax>0<>1");
}

TEST(Tokenizer, TakesAnExpectedTokenFirst) {
  VoMsgTokenizer tokenizer("?=(a", nullptr);
  EXPECT_EQ(tokenizer.getNextToken(7), 7);
  EXPECT_EQ(tokenizer.getNextToken(99), 8);
  EXPECT_EQ(tokenizer.getNextToken(2), 2);
  EXPECT_EQ(tokenizer.getState(), 2);
  EXPECT_EQ(tokenizer.getPosition(), 3);
}

TEST(Tokenizer, RecoversUnquotedBoundaries) {
  struct Row {
    const char* text;
    int start, length;  // the current token; reading stood at the end of the text when it was cut
    const char* want;
    int wantPosition;
    const char* wantToken;
  };
  constexpr Row kRows[] = {
      {"abc def", 0, 7, "abc", 0, "a"},     // -1 for the missing ";", capped to the text
      {"b= abc def", 2, 8, "abc", 2, " "},  // one blank takes the -1 back
      {"b=abc;x=y", 2, 7, "abc", 5, ";"},
      {"b= \tabc;x", 2, 7, "abc", 9, ""},  // blanks are counted on top of the place of the ";"
      {"a\tb\"c", 0, 5, "a\tb", 0, "a"},   // a tab inside stays
      {"    ;", 0, 5, "", 5, ""},
      {"abc", 1, 0, "", 3, ""},  // no token, no move
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.text);
    const auto exact = copyCString(row.text);
    VoMsgTokenizer tokenizer(exact.get(), nullptr);
    tokenizer.setState(99);
    tokenizer.getNextToken();
    tokenizer.setToken(row.start, row.length);
    std::string out = "old";
    tokenizer.getIllegalBoundary(out);
    EXPECT_EQ(out, row.want);
    EXPECT_EQ(tokenizer.getPosition(), row.wantPosition);
    tokenizer.getTokenString(out);
    EXPECT_EQ(out, row.wantToken);
  }
}

}  // namespace
