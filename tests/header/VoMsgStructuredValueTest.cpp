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

constexpr const char* kRows[][2] = {
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
  for (const auto& [text, want] : kRows) EXPECT_EQ(parsed(text), want) << text;
  EXPECT_EQ(parsed("a; b=1; c=2; boundary=d e", 2), "[a] b=[1] c=[2]");
}

// The same grammar, told through the tokens of VoMsgTokenizer.
std::string slowlyParsed(const std::string& text) {
  StructuredValue out;
  VoMsgTokenizer tokenizer(text.c_str(), nullptr);
  std::size_t base = 0, start = 0;
  int id = 0;
  const auto next = [&] {
    start = base + static_cast<std::size_t>(tokenizer.getPosition());
    id = tokenizer.getNextToken();
  };
  const auto take = [&] {
    std::string token;
    tokenizer.getTokenString(token);
    next();
    return token;
  };
  // One letter a kind: (e)nd, semicolon, equals, quote, (w)ord start, (b)lank, (t)ext.
  const auto isAt = [&](std::string_view kinds) {
    const char kind = id == VoMsgTokenizer::text ? 't' : id > VoMsgTokenizer::whitespace ? 'b' : "e;bb\"wtt=tb"[id];
    return kinds.find(kind) != kinds.npos;
  };
  // Everything from the current token to one of `ends`; reading starts anew there.
  const auto takeUntil = [&](const char* ends) {
    const std::size_t from = start;
    base = std::min(text.find_first_of(ends, from), text.size());
    tokenizer = VoMsgTokenizer(text.c_str() + base, nullptr);
    next();
    return text.substr(from, base - from);
  };
  const auto takeQuoted = [&] {
    std::string content, bare;
    next();
    if (id == VoMsgTokenizer::text) content = take();
    if (id == VoMsgTokenizer::quote) next();
    for (std::size_t i = 0; i < content.size(); ++i)
      if (content[i] != '\\' || ++i < content.size()) bare += content[i];
    return bare;
  };

  for (next(); !isAt("e;");) {
    if (!isAt("tw")) {
      next();
    } else if (isAt("t")) {
      out.value += take();
    } else {
      tokenizer.setState(VoMsgTokenizer::parameterValue);
      out.value += take();
      if (isAt("t")) out.value += take();
      tokenizer.setState(VoMsgTokenizer::structured);
    }
  }
  while (!isAt("e")) {
    if (!isAt("t")) {
      next();
      continue;
    }
    StructuredParameter made{take(), "", false};
    const bool isBoundary = equalNoCase(made.name, "boundary");
    while (isAt("b")) next();
    if (isAt("w") && isBoundary) {
      made.value = "?";
      next();
    } else if (!isAt("=")) {
      continue;
    } else if (isBoundary) {
      for (next(); id == VoMsgTokenizer::whitespace;) next();
      if (isAt("\"")) {
        made.value = takeQuoted();
        if (made.value.empty()) made.value = "\"";
      } else {
        made.value = takeUntil(";");
        made.value.erase(0, made.value.find_first_not_of(" \t"));
        made.value.erase(made.value.find_last_not_of(" \t") + 1);
        out.needsQuoting |= made.value.find_first_of("()<>@,;:\\\"/[]?\t ") != std::string::npos;
      }
    } else {
      while (isAt("=b")) next();
      made.isEncoded = isAt("w");
      if (isAt("\"")) {
        made.value = takeQuoted();
        made.isEncoded = made.value.find("=?") != std::string::npos;
      } else if (made.isEncoded) {
        made.value = takeUntil("; \t");
      } else {
        while (!isAt("e;b")) made.value += isAt("\"") ? next(), "" : take();
      }
    }
    out.parameters.push_back(made);
    ++out.count;
  }
  return show(out);
}

TEST(StructuredValue, AgreesWithTheTokenizerOnAllShortTexts) {
  test::forEveryString(";=?\"\\ ():a\n", 5, [](const std::string& text) {
    for (const char* const prefix : {"", "a;boundary", "a;n="})
      ASSERT_EQ(parsed(prefix + text), slowlyParsed(prefix + text)) << prefix << text;
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
