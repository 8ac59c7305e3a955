#include "vomsg/header/VoMsgStructuredValue.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/WindowStreams.h"

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
  const test::ExactMemoryReader exact(text);
  StructuredValue value;
  parseStructuredValue(value, {exact.bytes(), text.size()}, maxParameters);
  return show(value);
}

constexpr const char* kRows[][2] = {
    {"", "[]"},
    {"text/plain", "[text/plain]"},
    {" text / plain (a (nested) one) ; charset = \"us-ascii\" ;", "[text/plain] charset=[us-ascii]"},
    {"text/plain (open; charset=x", "[text/plain]"},
    {"\"attachment\"; filename=a", "[attachment] filename=[a]"},
    {"=?utf-8?Q?text?= (x) ;n=v", "[=?utf-8?Q?text?= (x) ] n=[v]"},
    {"a?=b:c=d\ne)\n", "[a?=b:cd\ne]"},  // an end of line is text, but not at the end
    {"a(b\\)c)d\\", "[ad\\]"},
    {"a=?x\\;y z;n=v", "[a=?x\\;y z] n=[v]"},
    {"a; =b; c; d=e", "[a] d=[e]"},
    {"a; b c=d", "[a] c=[d]"},
    {"a; b:c=d; e?f=g", "[a] c=[d] f=[g]"},
    {"a; n==b", "[a] n=[b]"},
    {"a; n= b", "[a] n=[b]"},
    {"a; n=; m=", "[a] n=[] m=[]"},
    {"a; n=b=c:d?e", "[a] n=[b=c:d?e]"},
    {"a; n=b(c)d; m=e f", "[a] n=[b] m=[e]"},
    {"a; n (c) = (d) b\"c\"?=d\n", "[a] n=[bc?=d]"},
    {"a; n=\"\"; m=\"b\\\\c\\\"d\\", "[a] n=[] m=[b\\c\"d]"},
    {"a; n=\"b\"c; m=d", "[a] n=[b] m=[d]"},
    {"a; n=\"=?utf-8?Q?b c?=\"", "[a] n=[=?utf-8?Q?b c?=]*"},
    {"a; n==?utf-8?Q?(b)?= c", "[a] n=[=?utf-8?Q?(b)?=]*"},
    {"a; n==?b\"c;d=e\"", "[a] n=[=?b\"c]* d=[e]"},
    {"a; n=?utf-8?Q?b?=; m=c", "[a] m=[c]"},
    {"a; boundary=?b c=d", "[a] boundary=[?] c=[d]"},
    {"a; Boundary (c) = \"b\\\" c\" d=e", "[a] Boundary=[b\" c] d=[e]"},
    {"a; boundary=\"\"", "[a] boundary=[\"]"},
    {"a; boundary=", "[a] boundary=[]"},
    {"a; boundary=b c ; n=d", "![a] boundary=[b c] n=[d]"},
    {"a; boundary==_b'c", "[a] boundary=[=_b'c]"},
    {"a; boundary= \t b?\"", "![a] boundary=[b?\"]"},
    {"a; boundary=(b)\"c;n=d", "![a] boundary=[(b)\"c] n=[d]"},
    {"a; boundary=b; boundary=c", "[a] boundary=[b] boundary=[c]"},
};

TEST(StructuredValue, CutsMainValueAndParameters) {
  for (const auto& [text, want] : kRows) {
    EXPECT_EQ(parsed(text), want) << text;
    for (std::size_t cut = 0; text[cut] != '\0'; ++cut) parsed(std::string_view(text, cut));  // reads nothing behind it
  }
  EXPECT_EQ(parsed("a; b=1; c=2; boundary=d e", 2), "[a] b=[1] c=[2]");
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
