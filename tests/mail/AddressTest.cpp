#include "vomsg/mail/Address.h"

#include <gtest/gtest.h>

#include "vomsg/mail.h"

namespace {

struct Row {
  const char* value;
  const char* want;  // "name|address|group" each, joined by blanks
};
const Row kRows[] = {
    {"", ""},
    {"a@b", "|a@b|"},
    {"Ada Keller <ada@b>", "Ada Keller|ada@b|"},
    {"\"Keller, Ada\" <ada@b>, jun@c", "Keller, Ada|ada@b| |jun@c|"},
    {"\"a \\\"b\\\" \\\\c\" <x@y>", "a \"b\" \\c|x@y|"},
    {"ada@b (Ada (the first) Keller)", "Ada (the first) Keller|ada@b|"},
    {"J <j@c>", "J|j@c|"},
    {"<@r1,@r2:ada@b>", "|ada@b|"},
    {"Team: a@b, Jun <j@c>; d@e", "|a@b|Team Jun|j@c|Team |d@e|"},
    {"undisclosed-recipients:;", ""},
    {"=?utf-8?Q?J=C3=BCrg?= =?utf-8?B?w4Q=?= <j@c>", "JürgÄ|j@c|"},
    {"\"=?iso-8859-1?Q?J=FCrg?=\" <j@c>", "Jürg|j@c|"},
    {"J\xfcrg <j@c>", "Jürg|j@c|"},  // bytes that nobody declared
    {"\"a b\"@c", "|\"a b\"@c|"},
    {"x@[IPv6:1::2], y@z", "|x@[IPv6:1::2]| |y@z|"},
    {"Ada\r\n Keller\r\n\t<ada@b>", "Ada Keller|ada@b|"},
    {"a @ b", "|a@b|"},
    {"broken <a@b, c@d", "broken|a@b,c@d|"},
    {"\"open, <a@b>", "|open, <a@b>|"},
    {"(open", "open||"},
    {",;,a@b,,", "|a@b|"},
    {"From: Ada: <a@b>", "Ada:|a@b|From"},
};

std::string shown(const std::vector<vomsg::Address>& list) {
  std::string out;
  for (const vomsg::Address& each : list) {
    out += (out.empty() ? "" : " ") + each.name + "|" + each.address + "|" + each.group;
  }
  return out;
}

TEST(FaceAddress, ReadsLists) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.value);
    EXPECT_EQ(shown(vomsg::parseAddresses(row.value)), row.want);
  }
}

// What is set reads back, in each field that holds addresses.
TEST(FaceAddress, SetReadsBack) {
  const std::vector<std::vector<vomsg::Address>> kLists = {
      {{"", "a@b", ""}},
      {{"Ada Keller", "a@b", ""}, {"Keller, \"Jun\" \\", "j@c", ""}},
      {{"Jürg Müller-Lüdenscheidt, der Ältere, aus Überlingen am Bodensee", "j@c", ""}, {"森 順", "m@d", ""}},
      {{"J", "j@c", ""}, {"", "\"a, b\"@e", ""}},
      {{"=?x?=", "a@b", ""}},
  };
  for (const auto& list : kLists) {
    SCOPED_TRACE(shown(list));
    for (const char* field : {"From", "To", "Cc", "Bcc", "Reply-To"}) {
      vomsg::Message message = vomsg::Message::parse("Subject: x\r\nTo: old@b\r\n\r\nbody\r\n").orThrow();
      message.setAddresses(field, list).orThrow();
      EXPECT_EQ(shown(message.addresses(field)), shown(list));
      const std::string written = message.toString().orThrow();
      EXPECT_TRUE(vomsg::isAscii(written));
      EXPECT_EQ(shown(vomsg::Message::parse(written).orThrow().addresses(field)), shown(list)) << written;
    }
  }
}

}  // namespace
