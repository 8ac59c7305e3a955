#include "vomsg/header/VoMsgStructuredValue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Inputs.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgTokenizer.h"

namespace vomsg::detail {
namespace {

std::string show(const StructuredValue& value) {
  std::string out = value.needsQuoting ? "!" : "";
  out += "[" + value.value + "]";
  for (std::size_t i = 0; i < value.count; ++i) {
    const StructuredParameter& parameter = value.parameters[i];
    out += " " + parameter.name + "=[" + parameter.value + "]" + (parameter.isEncoded ? "*" : "");
  }
  return out;
}

std::string parsed(std::string_view text, int maxParameters = 0) {
  StructuredValue value;
  parseStructuredValue(value, text, maxParameters);
  return show(value);
}

struct Row {
  const char* text;
  const char* want;
};
constexpr Row kRows[] = {
    {"", "[]"},
    {"text/plain", "[text/plain]"},
    {" text / plain (a (nested) one) ; charset = \"us-ascii\" ;", "[text/plain] charset=[us-ascii]"},
    {"text/plain (open; charset=x", "[text/plain]"},
    {"\"attachment\"; filename=a", "[attachment] filename=[a]"},
    {"=?utf-8?Q?text?= (x) ;n=v", "[=?utf-8?Q?text?= (x) ] n=[v]"},
    {"a; =b; c; d=e", "[a] d=[e]"},
    {"a; b c=d", "[a] c=[d]"},
    {"a; n==b", "[a] n=[b]"},
    {"a; n= b", "[a] n=[b]"},
    {"a; n=; m=", "[a] n=[] m=[]"},
    {"a; n=b=c:d?e", "[a] n=[b=c:d?e]"},
    {"a; n=b(c)d; m=e f", "[a] n=[b] m=[e]"},
    {"a; n=\"\"; m=\"b\\\\c\\\"d\\", "[a] n=[] m=[b\\c\"d]"},
    {"a; n=\"b\"c; m=d", "[a] n=[b] m=[d]"},
    {"a; n=\"=?utf-8?Q?b c?=\"", "[a] n=[=?utf-8?Q?b c?=]*"},
    {"a; n==?utf-8?Q?(b)?= c", "[a] n=[=?utf-8?Q?(b)?=]*"},
    {"a; n=?utf-8?Q?b?=; m=c", "[a] m=[c]"},
    {"a; boundary=?b c=d", "[a] boundary=[?] c=[d]"},
    {"a; Boundary=\"b c\"", "[a] Boundary=[b c]"},
    {"a; boundary=\"\"", "[a] boundary=[\"]"},
    {"a; boundary=", "[a] boundary=[]"},
    {"a; boundary=b c ; n=d", "![a] boundary=[b c] n=[d]"},
    {"a; boundary==_b'c", "[a] boundary=[=_b'c]"},
    {"a; boundary= \t b?\"", "![a] boundary=[b?\"]"},
    {"a; boundary=b; boundary=c", "[a] boundary=[b] boundary=[c]"},
};

TEST(StructuredValue, CutsMainValueAndParameters) {
  for (const Row& row : kRows) EXPECT_EQ(parsed(row.text), row.want) << row.text;
  EXPECT_EQ(parsed("a; b=1; c=2; boundary=d e", 2), "[a] b=[1] c=[2]");
}

// The same grammar, told through the tokens of VoMsgTokenizer.
class SlowParser {
 public:
  explicit SlowParser(const std::string& text) : mText(text), mTokenizer(mText.c_str(), nullptr) { next(); }

  std::string parse() {
    mainValue();
    while (!isAt("e"))
      if (isAt("t"))
        parameter();
      else
        next();
    return show(mOut);
  }

 private:
  // One letter a kind: (e)nd, semicolon, equals, quote, (w)ord start, (b)lank, (t)ext.
  bool isAt(std::string_view kinds) const { return kinds.find(kind()) != kinds.npos; }
  char kind() const {
    if (mId == VoMsgTokenizer::text) return 't';
    return mId > VoMsgTokenizer::whitespace ? 'b' : "e;bb\"wtt=tb"[mId];
  }
  void next() {
    mStart = mBase + static_cast<std::size_t>(mTokenizer.getPosition());
    mId = mTokenizer.getNextToken();
  }
  std::string token() const {
    std::string token;
    mTokenizer.getTokenString(token);
    return token;
  }
  // Everything from the current token to one of `ends`; reading starts anew there.
  std::string until(const char* ends) {
    const std::size_t end = std::min(mText.find_first_of(ends, mStart), mText.size());
    const std::string raw = mText.substr(mStart, end - mStart);
    mTokenizer = VoMsgTokenizer(mText.c_str() + end, nullptr);
    mBase = end;
    next();
    return raw;
  }
  std::string quoted() {
    std::string content, out;
    next();
    if (mId == VoMsgTokenizer::text) content = token(), next();
    if (mId == VoMsgTokenizer::quote) next();
    for (std::size_t i = 0; i < content.size(); ++i)
      if (content[i] != '\\' || ++i < content.size()) out += content[i];
    return out;
  }

  void mainValue() {
    while (!isAt("e;")) {
      if (isAt("t")) mOut.value += token();
      if (isAt("w")) {
        mOut.value += token();
        mTokenizer.setState(VoMsgTokenizer::parameterValue);
        next();
        if (isAt("t")) mOut.value += token(), next();
        mTokenizer.setState(VoMsgTokenizer::structured);
        continue;
      }
      next();
    }
  }

  void parameter() {
    StructuredParameter made{token(), "", false};
    next();
    while (isAt("b")) next();
    const bool isBoundary = equalNoCase(made.name, "boundary");
    if (isAt("=") && isBoundary)
      boundary(made);
    else if (isAt("="))
      value(made);
    else if (isAt("w") && isBoundary)
      made.value = "?", next();
    else
      return;
    mOut.parameters.push_back(made);
    ++mOut.count;
  }
  void boundary(StructuredParameter& made) {
    next();
    while (mId == VoMsgTokenizer::whitespace) next();
    if (isAt("\"")) {
      made.value = quoted();
      if (made.value.empty()) made.value = "\"";
      return;
    }
    made.value = until(";");
    made.value.erase(0, made.value.find_first_not_of(" \t"));
    made.value.erase(made.value.find_last_not_of(" \t") + 1);
    if (made.value.find_first_of("()<>@,;:\\\"/[]?\t ") != std::string::npos) mOut.needsQuoting = true;
  }
  void value(StructuredParameter& made) {
    while (isAt("=b")) next();
    if (isAt("\"")) {
      made.value = quoted();
      made.isEncoded = made.value.find("=?") != std::string::npos;
    } else if (isAt("w")) {
      made.value = until("; \t");
      made.isEncoded = true;
    } else {
      for (; !isAt("e;b"); next())
        if (!isAt("\"")) made.value += token();
    }
  }

  std::string mText;
  VoMsgTokenizer mTokenizer;
  std::size_t mBase = 0;
  std::size_t mStart = 0;
  int mId = 0;
  StructuredValue mOut;
};

TEST(StructuredValue, AgreesWithTheTokenizerOnAllShortTexts) {
  test::forEveryString(";=?\"\\ ():a\n", 5, [](const std::string& text) {
    for (const char* const prefix : {"", "a;boundary", "a;n="})
      ASSERT_EQ(parsed(prefix + text), SlowParser(prefix + text).parse()) << prefix << text;
  });
}

TEST(StructuredValue, ComparesAsAConflictOfContentTypesDoes) {
  StructuredValue a, b;
  const auto same = [&](const char* first, const char* second) {
    parseStructuredValue(a, first, 0);
    parseStructuredValue(b, second, 0);
    return sameStructuredValue(a, b);
  };
  EXPECT_TRUE(same("Text/Plain; Charset=x", "text/plain ;charset=\"x\" (c)"));
  EXPECT_FALSE(same("text/plain; charset=x", "text/plain; charset=X"));
  EXPECT_FALSE(same("text/plain; a=1; b=2", "text/plain; b=2; a=1"));
  EXPECT_FALSE(same("text/plain; a=1", "text/plain"));
  EXPECT_EQ(a.find("A")->value, "1");
  EXPECT_EQ(a.find("b"), nullptr);
}

}  // namespace
}  // namespace vomsg::detail
