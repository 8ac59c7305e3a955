#include "vomsg/foundation/VoMsgTokenizer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "vomsg/foundation/tables/VoMsgDefaultTokens.h"

namespace {

using Ids = std::vector<int>;

struct Taken {
  int id;
  std::string text;
  int state;
  int position;
  bool operator==(const Taken&) const = default;
};

// The plain rule: every entry at every byte, with strncmp.
class SlowTokenizer {
 public:
  SlowTokenizer(const std::string& text, const VoMsgTokenTableSet& set, int state)
      : mText(text), mSet(set), mState(state) {}

  Taken next(int expected) {
    const VoMsgTokenEntry* entry = table();
    while (expected != -1 && entry->id != 0 && entry->id != expected) ++entry;
    if (expected != -1 && entry->id != 0 && matches(*entry)) return take(*entry);
    if (mAt == mText.size()) return {0, "", mState, at()};
    if (mState == 2) return nextInComment();
    std::string run;
    for (bool escaped = false; mAt < mText.size(); run += mText[mAt++]) {
      if (!escaped && mText[mAt] == '\\' && mSet.states[mState].escape == 1) {
        escaped = true;
        continue;
      }
      const VoMsgTokenEntry* found = escaped ? nullptr : match();
      escaped = false;
      if (found && !run.empty()) break;
      if (!found) continue;
      mDepth += found->id == 2;
      return take(*found);
    }
    return {100, run, mState, at()};
  }

 private:
  const VoMsgTokenEntry* table() const { return mSet.states[mState].table; }
  int at() const { return static_cast<int>(mAt); }
  bool matches(const VoMsgTokenEntry& entry) const {
    return std::strncmp(mText.c_str() + mAt, entry.text, entry.length) == 0;
  }
  const VoMsgTokenEntry* match() const {
    for (const VoMsgTokenEntry* entry = table(); entry->id != 0; ++entry)
      if (matches(*entry)) return entry;
    return nullptr;
  }
  Taken take(const VoMsgTokenEntry& entry) {
    const std::string token = mText.substr(mAt, entry.length);
    mAt += token.size();
    mState = entry.nextState;
    return {entry.id, token, mState, at()};
  }
  Taken nextInComment() {
    std::string run(1, mText[mAt++]);
    if (run == "(") return ++mDepth, Taken{2, run, mState, at()};
    if (run == ")") return mState = --mDepth == 0 ? 0 : 2, Taken{3, run, mState, at()};
    for (bool escaped = run == "\\"; mAt < mText.size(); run += mText[mAt++]) {
      if (!escaped && (mText[mAt] == '(' || mText[mAt] == ')')) break;
      escaped = !escaped && mText[mAt] == '\\';
    }
    return {300, run, mState, at()};
  }

  const std::string mText;
  const VoMsgTokenTableSet& mSet;
  int mState;
  std::size_t mAt = 0;
  int mDepth = 0;
};

// The text in a block of its exact size, so that the sanitizers see one byte too far.
std::unique_ptr<char[]> exactCopy(const std::string& text) {
  std::unique_ptr<char[]> copy(new char[text.size() + 1]);
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  return copy;
}

void compare(const std::string& text, const VoMsgTokenTableSet& set, int state, unsigned expectations) {
  const auto copy = exactCopy(text);
  VoMsgTokenizer fast(copy.get(), &set);
  fast.setState(state);
  SlowTokenizer slow(text, set, state);
  for (Taken want{1, "", 0, 0}; want.id != 0; expectations = expectations * 5 + 3) {
    const int expected = expectations % 3 == 0 ? static_cast<int>(expectations % 14) : -1;
    want = slow.next(expected);
    const int id = fast.getNextToken(expected);
    std::string token;
    fast.getTokenString(token);
    ASSERT_TRUE((Taken{id, token, fast.getState(), fast.getPosition()} == want))
        << "[" << text << "] from state " << state << ": " << id << " [" << token << "], not " << want.id;
  }
}

template <class Visit>
void forEachString(const std::string& alphabet, std::size_t longest, Visit visit) {
  std::vector<std::string> texts(1);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    visit(texts[i]);
    if (texts[i].size() == longest) continue;
    for (const char c : alphabet) texts.push_back(texts[i] + c);
  }
}

Ids idsOf(const char* text, std::vector<std::string>* tokens = nullptr) {
  VoMsgTokenizer tokenizer(text, nullptr);
  Ids ids;
  do {
    ids.push_back(tokenizer.getNextToken());
    if (tokens) tokenizer.getTokenString(tokens->emplace_back());
  } while (ids.back() != 0);
  EXPECT_EQ(tokenizer.getState(), 0);
  return ids;
}

TEST(Tokenizer, ReadsStructuredValues) {
  std::vector<std::string> tokens;
  EXPECT_EQ(idsOf("text/plain; charset=\"x\"", &tokens), (Ids{100, 1, 10, 100, 8, 4, 100, 4, 0}));
  EXPECT_EQ(tokens[0] + "|" + tokens[3] + "|" + tokens[6] + "|" + tokens[8], "text/plain|charset|x|");
  EXPECT_EQ(idsOf("(a(b)c)"), (Ids{2, 300, 2, 300, 3, 300, 3, 0}));
  EXPECT_EQ(idsOf("a\rb\nc"), (Ids{100, 0}));
  EXPECT_EQ(idsOf("a\r"), (Ids{100, 11, 0}));
  EXPECT_EQ(idsOf("\r\n"), (Ids{100, 12, 0}));
  EXPECT_EQ(idsOf("=?a?b?c?="), (Ids{5, 100, 7, 100, 7, 100, 6, 0}));
  EXPECT_EQ(idsOf(nullptr), (Ids{0}));
}

TEST(Tokenizer, AgreesWithThePlainRule) {
  using vomsg::detail::kDefaultTokens;
  std::vector<VoMsgTokenState> plain(kDefaultTokens.states, kDefaultTokens.states + kDefaultTokens.count);
  for (VoMsgTokenState& state : plain) state.classes = nullptr;
  // Prefixes of one another, an entry behind a longer one, one that only the end matches, ids that repeat.
  constexpr VoMsgTokenEntry odd[] = {{7, "??", 2, 0}, {4, "a", 3, 1}, {7, "?", 1, 1}, {9, "?a", 2, 0}, {0, "", 0, 0}};
  plain.push_back({1, odd, nullptr});
  const VoMsgTokenTableSet unclassified{plain.data(), static_cast<unsigned>(plain.size())};
  unsigned count = 0;
  forEachString("=?()\"\\a\r", 6, [&](const std::string& text) {
    for (int state = 0; state < 4; ++state) compare(text, kDefaultTokens, state, 1);
    compare(text, kDefaultTokens, 0, ++count);
    compare(text, unclassified, static_cast<int>(count % 5), count);
  });
  forEachString("=?(;: \\\n", 4, [&](const std::string& text) { compare(text, kDefaultTokens, 0, ++count); });
  forEachString("()\\a", 7, [&](const std::string& text) { compare(text, kDefaultTokens, 2, 1); });
}

TEST(Tokenizer, TakesAnExpectedTokenFirst) {
  VoMsgTokenizer tokenizer("?=a", nullptr);
  EXPECT_EQ(tokenizer.getNextToken(7), 7);
  EXPECT_EQ(tokenizer.getNextToken(99), 8);
  tokenizer.setState(99);  // no such state, no tokens
  EXPECT_EQ(tokenizer.getNextToken(), 100);
}

TEST(Tokenizer, NestedCommentsCostNoStack) {
  const std::string text = std::string(1000000, '(') + std::string(1000000, ')');
  VoMsgTokenizer tokenizer(text.c_str(), nullptr);
  for (int i = 0; i < 2000000; ++i) ASSERT_EQ(tokenizer.getNextToken(), i < 1000000 ? 2 : 3);
  EXPECT_EQ(tokenizer.getState(), 0);
  EXPECT_EQ(tokenizer.getNextToken(), 0);
}

TEST(Tokenizer, RecoversUnquotedBoundaries) {
  struct Row {
    const char* text;
    int start, length, position;  // the current token, and where reading stood when it was cut
    const char* want;
    int wantPosition;
    const char* wantToken;
  };
  constexpr Row kRows[] = {
      {"abc def", 0, 7, 7, "abc", 0, "a"},      // -1 for the missing ";", capped to the text
      {"b= abc def", 2, 8, 10, "abc", 2, " "},  // one blank takes the -1 back
      {"b=abc;x=y", 2, 7, 9, "abc", 5, ";"},
      {"b= \tabc;x", 2, 7, 9, "abc", 9, ""},  // blanks are counted on top of the place of the ";"
      {"a\tb\"c", 0, 5, 5, "a\tb", 0, "a"},   // a tab inside stays
      {"    ;", 0, 5, 5, "", 5, ""},
      {"abc", 1, 0, 1, "", 1, ""},  // no token, no move
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.text);
    const auto copy = exactCopy(row.text);
    VoMsgTokenizer tokenizer(copy.get(), nullptr);
    tokenizer.setState(99);
    for (std::string token; tokenizer.getPosition() < row.position;) tokenizer.getNextToken();
    tokenizer.setToken(row.start, row.length);
    std::string out = "old";
    tokenizer.getIllegalBoundary(out);
    EXPECT_EQ(out, row.want);
    if (row.length > 0) {
      EXPECT_EQ(tokenizer.getPosition(), row.wantPosition);
    }
    tokenizer.getTokenString(out);
    EXPECT_EQ(out, row.wantToken);
  }
}

}  // namespace
