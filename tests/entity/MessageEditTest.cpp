#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>

#include "tests/support/MessageFixture.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/header/VoMsgHeaderField.h"
#include "vomsg/header/VoMsgUserAddress.h"

namespace {

using namespace vomsg::test;

constexpr char kTwoParts[] =
    "Subject: s\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\npre\r\n--b\r\n\r\none\r\n--b \r\nA: "
    "1\r\n\r\ntwo\r\n"
    "--b--\r\nepi\r\n";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, text.npos) << from;
  return at == text.npos ? text : text.replace(at, from.size(), to);
}

VoMsgMimeEntity* newPart(const char* text) {
  auto* const part = new VoMsgMimeEntity;
  std::string bytes = text;
  EXPECT_EQ(part->setContent(resourceOver(bytes).get(), "text/plain", "7bit"), kVoSuccess);
  return part;
}

// Parentheses around what an entity holds; of a leaf its content, "-" for none.
std::string contentsOf(VoMsgEntity& entity) {
  const std::string content = entity.hasChildEntity() || entity.isMultipartEntity() ? "" : contentOf(entity);
  if (!entity.hasChildEntity()) return content.empty() ? "-" : content;
  std::string out = "(";
  for (VoMsgEntity* child = entity.getChildEntity(); child; child = child->getNextSiblingEntity())
    out += contentsOf(*child);
  return out + ")";
}

constexpr char kNewPart[] = "Content-Type: text/plain\r\nContent-Transfer-Encoding: 7bit\r\n\r\nnew";

TEST(MessageEdit, ChildrenComeAndGoWithTheirDelimiters) {
  struct Row {
    const char* name;
    void (*edit)(VoMsgRfc822Message& message);
    std::string want;
  };
  const std::string part = kNewPart;
  const std::string text = kTwoParts;
  const Row rows[] = {
      {"append", [](VoMsgRfc822Message& m) { m.appendChildEntity(newPart("new")); },
       replaced(text, "two\r\n", "two\r\n--b\r\n" + part + "\r\n")},
      {"insert first", [](VoMsgRfc822Message& m) { m.insertChildEntityAt(newPart("new"), 0); },
       replaced(text, "--b\r\n\r\none", "--b\r\n" + part + "\r\n--b\r\n\r\none")},
      {"insert between", [](VoMsgRfc822Message& m) { m.insertChildEntityAt(newPart("new"), 1); },
       replaced(text, "one\r\n", "one\r\n--b\r\n" + part + "\r\n")},
      {"remove first", [](VoMsgRfc822Message& m) { m.removeChildEntityAt(0); },
       replaced(text, "--b\r\n\r\none\r\n", "")},
      {"remove last", [](VoMsgRfc822Message& m) { m.removeChildEntityAt(1); },
       replaced(text, "--b \r\nA: 1\r\n\r\ntwo\r\n", "")},
      {"remove all",
       [](VoMsgRfc822Message& m) {
         m.removeChildEntityAt(1);
         m.removeChildEntityAt(0);
       },
       replaced(text, "--b\r\n\r\none\r\n--b \r\nA: 1\r\n\r\ntwo\r\n", "")},
      {"replace all",
       [](VoMsgRfc822Message& m) {
         m.removeChildEntityAt(0);
         m.removeChildEntityAt(0);
         m.appendChildEntity(newPart("new"));
       },
       replaced(text, "--b\r\n\r\none\r\n--b \r\nA: 1\r\n\r\ntwo\r\n", "--b\r\n" + part + "\r\n")},
      {"remove and insert",
       [](VoMsgRfc822Message& m) {
         m.removeChildEntityAt(0);
         m.insertChildEntityAt(newPart("new"), 0);
       },
       replaced(text, "--b\r\n\r\none\r\n--b \r\n", "--b \r\n" + part + "\r\n--b\r\n")},
  };
  for (const Row& row : rows)
    for (const Source source : {Source::memory, Source::file}) {
      SCOPED_TRACE(row.name);
      MessageFixture message(text, source);
      row.edit(*message);
      EXPECT_TRUE(message->isModified());
      EXPECT_EQ(written(*message), row.want);
      EXPECT_EQ(written(*message), row.want);  // writing changes nothing
      const std::unique_ptr<VoMsgMailMessage> copy(message->split());
      EXPECT_EQ(written(*copy), row.want);
    }
}

// A multipart whose header block ends with the data has no body yet; an empty part gets its line end only once; what
// stands behind the close delimiter goes with the entity that was found in it.
TEST(MessageEdit, ChildrenOfIncompleteMultiparts) {
  const std::string header = "Content-Type: multipart/mixed; boundary=b\r\n";
  const std::string part = std::string("--b\r\n") + kNewPart + "\r\n";
  for (const std::string& start : {header, header.substr(0, header.size() - 2), header + "\r\n"}) {
    MessageFixture message(start);
    for (int i = 0; i < 2; ++i) ASSERT_EQ(message->appendChildEntity(newPart("new")), kVoSuccess);
    EXPECT_EQ(written(*message), header + "\r\n" + part + part + "--b--\r\n");
  }
  MessageFixture empty(header + "\r\n--b\r\n--b--");
  for (int i = 0; i < 2; ++i) ASSERT_EQ(empty->appendChildEntity(newPart("new")), kVoSuccess);
  EXPECT_EQ(written(*empty), header + "\r\n--b\r\n\r\n" + part + part + "--b--");

  const std::string parts = header + "\r\n--b\r\n\r\none\r\n--b--\r\n";
  MessageFixture behind(parts + "begin 644 a.txt\r\n#86)C\r\n`\r\nend\r\n");
  ASSERT_EQ(behind->countChildEntity(), 2u);
  ASSERT_EQ(behind->removeChildEntityAt(1), kVoSuccess);
  EXPECT_EQ(written(*behind), parts);
}

// Where things go that were not there: behind a delimiter line that ended with the data, before what stands behind the
// close delimiter, in a multipart whose boundary an open one below it has too.
TEST(MessageEdit, AdditionsFindTheirPlace) {
  struct Row {
    const char* name;
    std::string text;
    unsigned entity;  // in document order
    void (*edit)(VoMsgEntity& entity);
    std::string want;  // "" where a boundary is drawn
    const char* tree;  // content types, of leaves the content
  };
  const std::string header = "Content-Type: multipart/mixed; boundary=b\r\n\r\n", open = header + "--b";
  const std::string part = std::string(kNewPart), block = "begin 644 a.txt\r\n#86)C\r\n`\r\nend\r\n";
  const std::string same = header + "--b\r\n" + header + "--b\r\n\r\none\r\n";
  const auto append = [](VoMsgEntity& e) { e.appendChildEntity(newPart("new")); };
  const auto insert = [](VoMsgEntity& e) { e.insertChildEntityAt(newPart("new"), 0); };
  const auto second = [](VoMsgEntity& e) { e.insertChildEntityAt(newPart("new"), 1); };
  const Row rows[] = {
      {"field", open, 1, [](VoMsgEntity& e) { e.setHeaderValue("X", "y", "us-ascii", nullptr); },
       open + "\r\nX: y\r\n\r\n", "(-)"},
      {"content", open, 1,
       [](VoMsgEntity& e) {
         std::string x = "x";
         e.setRawContent(resourceOver(x).get(), nullptr, nullptr);
       },
       open + "\r\n\r\nx", "(x)"},
      {"in front", open, 0, insert, open + "\r\n" + part + "\r\n--b\r\n", "(new-)"},
      {"behind", open, 0, append, open + "\r\n--b\r\n" + part, "(-new)"},
      {"before an attachment", header + "--b\r\n\r\none\r\n--b--\r\n" + block, 0, append,
       header + "--b\r\n\r\none\r\n--b\r\n" + part + "\r\n--b--\r\n" + block, "(onenew(abc))"},
      {"second before it", header + "--b\r\n\r\none\r\n--b--\r\n" + block, 0, second,
       header + "--b\r\n\r\none\r\n--b\r\n" + part + "\r\n--b--\r\n" + block, "(onenew(abc))"},
      {"same boundary, open", same, 0, append, "", "((one\r\n)new)"},
      {"text before a block", "\r\ntext\r\n" + block, 2,
       [](VoMsgEntity& e) {
         std::string x = "x";
         e.setContent(resourceOver(x).get(), nullptr, nullptr);
       },
       "\r\nx\r\n" + block, nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    MessageFixture message(row.text);
    row.edit(*entitiesOf(*message)[row.entity]);
    const std::string out = written(*message);
    EXPECT_TRUE(row.want.empty() || out == row.want) << out;
    MessageFixture again(out);
    if (!row.tree) continue;
    EXPECT_EQ(contentsOf(*again), row.tree) << out;
    EXPECT_EQ(contentsOf(*message), row.tree);
  }
}

// Also by another name, and for a message that lies in the source of another.
TEST(MessageEdit, NoMessageIsWrittenOverItsSource) {
  const std::string text = "Content-Type: message/rfc822\r\n\r\nSubject: in\r\n\r\nx\r\n";
  const std::string path = testing::TempDir() + "vomsg_source.eml", other = testing::TempDir() + "vomsg_other.eml";
  std::ofstream(path, std::ios::binary) << text;
  std::remove(other.c_str());
  ASSERT_EQ(::link(path.c_str(), other.c_str()), 0);
  VoMsgRfc822Message message;
  ASSERT_EQ(message.readFrom(new VoMsgFileResource(path.c_str(), nullptr, nullptr)), kVoSuccess);
  for (VoMsgEntity* entity : entitiesOf(message))
    for (const std::string& name : {path, other}) {
      VoMsgFileResource target(name.c_str(), nullptr, nullptr);
      if (auto* const own = dynamic_cast<VoMsgMailMessage*>(entity)) {
        EXPECT_EQ(own->writeTo(&target), kVoBadArgument) << name;
      }
    }
  EXPECT_EQ(written(message), text);
  std::remove(path.c_str());
  std::remove(other.c_str());
}

TEST(MessageEdit, PartsForMultipartsWithoutDelimiters) {
  struct Row {
    const char* body;
    const char* want;  // $ stands for the part
  };
  constexpr Row kRows[] = {
      {"--b--\n", "--b\n$\n--b--\n"},         {"pre\n--b--\nepi", "pre\n--b\n$\n--b--\nepi"}, {"", "--b\n$\n--b--\n"},
      {"text", "text\n--b\n$\n--b--\n"},      {"--b\n\none", "--b\n\none\n--b\n$"},  // no close delimiter is added
      {"--b\n--b--", "--b\n\n--b\n$\n--b--"},                                        // a part without anything in it
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.body);
    const std::string header = "Content-Type: multipart/mixed; boundary=b\n\n";
    MessageFixture message(header + row.body);
    ASSERT_EQ(message->appendChildEntity(newPart("new")), kVoSuccess);
    EXPECT_EQ(written(*message), replaced(header + row.want, "$", kNewPart));
  }
}

TEST(MessageEdit, ANewBoundaryChangesTheDelimitersOfItsMultipartAlone) {
  const std::string inner = "Content-Type: multipart/mixed; boundary=c\r\n\r\n--c\r\n\r\nx\r\n--c--\r\n";
  MessageFixture message("Content-Type: multipart/mixed; boundary=b\r\n\r\npre\r\n--b  \r\n" + inner +
                         "--b--\r\n--b\r\n");
  ASSERT_EQ(message->setHeaderParameterValue("Content-Type", "boundary", "new", "us-ascii", nullptr), kVoSuccess);
  const std::string out = written(*message);
  EXPECT_EQ(out.substr(out.find("\r\n\r\n") + 4), "pre\r\n--new\r\n" + inner + "--new--\r\n--b\r\n");
}

TEST(MessageEdit, ALeafBecomesAMultipartWithItsFormerContentFirst) {
  MessageFixture message("Subject: s\r\nContent-Type: text/html; charset=x\r\nX: y\r\n\r\n<p>\r\n");
  ASSERT_EQ(message->appendChildEntity(newPart("new")), kVoSuccess);
  MessageFixture again(written(*message));
  ASSERT_EQ(again->countChildEntity(), 2u) << written(*message);
  EXPECT_TRUE(again->isContentType("multipart", "mixed"));
  EXPECT_STREQ(again->getRawHeaderValue("X"), "y") << written(*message);
  EXPECT_STREQ(again->getRawHeaderValue("MIME-Version"), "1.0");
  EXPECT_STREQ(again->getChildEntityAt(0)->getContentType(), "text/html");
  EXPECT_EQ(contentOf(*again->getChildEntityAt(0)), "<p>\r\n");
  EXPECT_EQ(contentOf(*again->getChildEntityAt(1)), "new");
}

TEST(MessageEdit, ComposesFromNothing) {
  VoMsgRfc822Message empty;
  EXPECT_EQ(written(empty), "\r\n");
  VoMsgRfc822Message message;
  ASSERT_EQ(message.setHeaderValue("Subject", "hello", "us-ascii", nullptr), kVoSuccess);
  ASSERT_EQ(message.appendChildEntity(newPart("a")), kVoSuccess);
  auto* const attached = new VoMsgRfc822Message;
  ASSERT_EQ(attached->setHeaderValue("Subject", "inner", "us-ascii", nullptr), kVoSuccess);
  ASSERT_EQ(message.appendChildEntity(attached), kVoSuccess);
  MessageFixture again(written(message));
  ASSERT_EQ(entitiesOf(*again).size(), 4u) << written(message);
  EXPECT_STREQ(entitiesOf(*again)[3]->getHeaderValue("Subject", "utf-8"), "inner");
}

TEST(MessageEdit, NewContentFollowsTheRules) {
  std::string text = "x";
  MessageFixture multi(kTwoParts);
  MessageFixture single("Content-Transfer-Encoding: x-own\r\n\r\nbody");
  const auto content = resourceOver(text);
  EXPECT_EQ(single->setContent(nullptr, nullptr, "base64"), kVoBadArgument);
  EXPECT_EQ(multi->setContent(content.get(), nullptr, "nonsense"), kVoNoContent);
  EXPECT_EQ(single->setContent(content.get(), nullptr, "nonsense"), kVoBadEncoding);
  EXPECT_EQ(single->setContent(content.get(), nullptr, nullptr), kVoBadEncoding);
  EXPECT_FALSE(single->isModified());
  EXPECT_EQ(single->setContent(content.get(), nullptr, "Base64"), kVoSuccess);
  EXPECT_EQ(written(*single), "Content-Transfer-Encoding: Base64\r\n\r\neA==\r\n");
  int err = 0;
  EXPECT_EQ(multi->getContent(err, nullptr), nullptr);
  EXPECT_EQ(static_cast<VoErrorCode>(err), kVoNoContent);
}

// Only names are encoded: an address inside an encoded word reaches nobody.
TEST(MessageEdit, AddressesStayOutsideEncodedWords) {
  MessageFixture message("To: a@b\r\n\r\n");
  ASSERT_EQ(message->setHeaderValue("To", "\"J\xc3\xb6rg, X\" <j@x.org>, plain@x.org", "utf-8", nullptr), kVoSuccess);
  EXPECT_EQ(written(*message), "To: =?utf-8?Q?J=C3=B6rg=2C_X?=\r\n\t<j@x.org>,\r\n\tplain@x.org\r\n\r\n");
  EXPECT_EQ(message->countUserAddress("To"), 2u);
  ASSERT_EQ(message->setHeaderValue("Cc", "c@x.org\r\nBcc: d@x.org", "utf-8", nullptr), kVoSuccess);
  EXPECT_EQ(written(*message).find("\r\nBcc"), std::string::npos);
}

// A media type in an encoded word would be none; and a value that cannot be encoded changes nothing.
TEST(MessageEdit, ParametersAreEncodedWithoutTheirValue) {
  MessageFixture message("Content-Type: text/plain; x=1\r\n\r\n");
  const char* const value = "image/png; name=\xc3\xa4; y=2";
  ASSERT_NE(message->setHeaderValue("Content-Type", value, "utf-8", "no-such"), kVoSuccess);
  EXPECT_FALSE(message->isModified());
  ASSERT_EQ(message->setHeaderValue("Content-Type", value, "utf-8", "utf-8"), kVoSuccess);
  MessageFixture again(written(*message));
  EXPECT_STREQ(again->getContentType(), "image/png");
  EXPECT_STREQ(again->getHeaderParameterValue("Content-Type", "name", "utf-8"), "\xc3\xa4");
  for (const char* name : {"x", "y"}) EXPECT_TRUE(again->getRawHeaderParameterValue("Content-Type", name)) << name;
}

TEST(MessageEdit, TextKeepsItsCharsetWhenThatLosesNothing) {
  const std::string header = "Content-Type: text/plain; charset=iso-8859-1\r\nContent-Transfer-Encoding: 8bit\r\n\r\n";
  std::string text = "gr\xc3\xbc\xc3\x9f\nnext";
  MessageFixture fits(header);
  ASSERT_EQ(fits->setTextContent(resourceOver(text).get(), nullptr, "utf-8"), kVoSuccess);
  EXPECT_STREQ(fits->getCharset(), "iso-8859-1");
  EXPECT_EQ(contentOf(*fits), "gr\xfc\xdf\r\nnext");
  EXPECT_STREQ(fits->getEncoding(), "quoted-printable");
  text = "\xc3\xbc\nnext\n";  // lines stay lines, whatever ends those of the message
  MessageFixture lines("Content-Type: text/plain; charset=utf-8\n\n");
  ASSERT_EQ(lines->setTextContent(resourceOver(text).get(), nullptr, "utf-8"), kVoSuccess);
  EXPECT_NE(written(*lines).find("=C3=BC\nnext\n"), std::string::npos) << written(*lines);
  text = "\xe2\x82\xac";
  MessageFixture other(header);
  ASSERT_EQ(other->setTextContent(resourceOver(text).get(), nullptr, "utf-8"), kVoSuccess);
  EXPECT_STREQ(other->getCharset(), "utf-8");
  MessageFixture again(written(*other));
  EXPECT_EQ(contentOf(*again), text);
}

// The lines of a text become those of the message that it is set in, encoded or not; of other content only the lines
// that an encoding makes.
TEST(MessageEdit, LinesEndAsInTheMessage) {
  struct Row {
    const char *type, *encoding, *want;  // $ stands for the line end
    bool asText = false;
  };
  constexpr Row kRows[] = {
      {"text/plain", "7bit", "a$b$"},
      {"text/plain", "quoted-printable", "a$b$"},
      {"text/plain", "base64", nullptr},
      {"text/plain", "7bit", "a$b$", true},
      {"text/plain", "quoted-printable", "a$b$", true},
      {"text/plain", "base64", nullptr, true},
      {"image/png", "quoted-printable", "a=0D=0Ab=0D=0A"},
      {"image/png", "base64", "YQ0KYg0K$"},
      {"image/png", "x-uuencode", " noname$&80T*8@T*$`$end$"},
  };
  for (const std::string& first : {std::string("\n"), std::string("\r\n")})
    for (const std::string& others : {std::string("\n"), std::string("\r\n")})
      for (const Row& row : kRows) {
        SCOPED_TRACE(row.type + std::string(" ") + row.encoding + testing::PrintToString(first + others));
        MessageFixture message("Content-Type: " + std::string(row.type) + first + "Content-Transfer-Encoding: " +
                               row.encoding + others + "X: y" + others + others + "old" + others);
        std::string content = "a\r\nb\r\n";
        const auto resource = resourceOver(content);
        ASSERT_EQ(row.asText ? message->setTextContent(resource.get(), nullptr, "us-ascii")
                             : message->setContent(resource.get(), nullptr, nullptr),
                  kVoSuccess);
        const std::string own = first == "\n" ? "\n" : "\r\n";
        std::string want = row.want ? row.want : own == "\n" ? "YQpiCg==$" : "YQ0KYg0K$";
        for (std::size_t at; (at = want.find('$')) != want.npos;) want.replace(at, 1, own);
        const std::string out = written(*message);
        EXPECT_TRUE(out.ends_with((want[0] == ' ' ? "" : others + others) + want)) << out;
      }
}

// A line of 998 bytes is the longest that may stand unencoded; its end does not count.
TEST(MessageEdit, LongLinesAreEncoded) {
  for (const char* lineEnd : {"\r\n", "\n", ""})
    for (const std::size_t length : {998u, 999u})
      for (const char* messageEnd : {"\r\n", "\n"}) {
        MessageFixture message(std::string("Subject: s") + messageEnd + messageEnd);
        std::string text = std::string(length, 'x') + lineEnd;
        ASSERT_EQ(message->setTextContent(resourceOver(text).get(), nullptr, "us-ascii"), kVoSuccess);
        EXPECT_EQ(message->getEncoding() == nullptr, length == 998) << length << testing::PrintToString(lineEnd);
      }
}

TEST(MessageEdit, WideTextIsReadAndBecomesUtf8WhenItIsReplaced) {
  using namespace std::string_literals;
  const std::string head = "Content-Type: text/plain; charset=";
  struct Row {
    std::string charset, body, want;
  };
  const Row rows[] = {{"utf-16", "\xFF\xFEh\0\xE4\0\x3D\xD8\0\xDE"s, "h\xC3\xA4\xF0\x9F\x98\x80"},
                      {"UTF-16", "\0h\0i\xD8\0"s, "hi\xEF\xBF\xBD"},  // a surrogate alone
                      {"utf-16le", "h\0i\0x"s, "hi\xEF\xBF\xBD"},     // cut
                      {"utf-32be", "\0\0\0h\0\1\xF6\0\0\x11\0\0"s, "h\xF0\x9F\x98\x80\xEF\xBF\xBD"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.charset);
    MessageFixture message(head + row.charset + "\r\n\r\n" + row.body);
    int err = 0;
    EXPECT_EQ(bytesOf(message->getTextContent(err, nullptr, "utf-8")), row.want);
    std::string text = "new \xE2\x82\xAC\n";
    ASSERT_EQ(message->setTextContent(resourceOver(text).get(), nullptr, "utf-8"), kVoSuccess);
    MessageFixture again(written(*message));
    EXPECT_STREQ(again->getCharset(), "utf-8");
    EXPECT_EQ(contentOf(*again), "new \xE2\x82\xAC\r\n");
  }
}

// A delimiter line in the content would end its part, and a carriage return at its end would join the line feed of the
// delimiter, if nobody took care; binary content must come back exactly in all encodings.
TEST(MessageEdit, AnyContentReadsBackInAnyEncoding) {
  using namespace std::string_literals;
  const std::string contents[] = {"x\r\n--b\r\ny\r\n--o--\r\n",
                                  "--b",
                                  "a\nb\n",
                                  "a\rb\r",
                                  "\0\0\r\n\n"s,
                                  "blanks \t\r\n at \r\n ends ",
                                  "\r\n\r\n",
                                  std::string(300, 'x'),
                                  "begin 644 x\r\n=41=\r\n"};
  for (const std::string& lineEnd : {"\r\n"s, "\n"s, "\r"s})
    for (const char* encoding : {"base64", "quoted-printable", "7bit", "8bit", "binary", "x-uuencode", "mac-binhex40"})
      for (std::string content : contents) {
        SCOPED_TRACE(encoding + (": " + testing::PrintToString(content)) + testing::PrintToString(lineEnd));
        std::string text;
        for (const char* line :
             {"Content-Type: multipart/mixed; boundary=o", "", "--o", "Content-Type: multipart/mixed; boundary=b", "",
              "--b", "Content-Type: application/octet-stream", "", "one", "--b", "", "two", "--b--", "--o--"})
          text += line + lineEnd;
        MessageFixture message(text);
        ASSERT_EQ(entitiesOf(*message)[2]->setContent(resourceOver(content).get(), nullptr, encoding), kVoSuccess);
        MessageFixture again(written(*message));
        ASSERT_EQ(entitiesOf(*again).size(), 4u) << written(*message);
        EXPECT_EQ(contentOf(*entitiesOf(*again)[2]), content) << written(*message);
        EXPECT_EQ(contentOf(*entitiesOf(*again)[3]), "two");
      }
}

TEST(MessageEdit, AMessageCanBeAttachedToItsOwnCopy) {
  MessageFixture message(kTwoParts);
  ASSERT_EQ(message->appendChildEntity(message->split()), kVoSuccess);
  MessageFixture again(written(*message));
  std::vector<std::string> contents;
  for (VoMsgEntity* entity : entitiesOf(*again))
    if (!entity->isMultipartEntity() && !entity->hasChildEntity()) contents.push_back(contentOf(*entity));
  EXPECT_EQ(contents, (std::vector<std::string>{"one", "two", "one", "two"})) << written(*message);
}

// As content, or in the text of a message: wherever they stand, the new part does not end there.
TEST(MessageEdit, AnAddedPartMayHoldTheDelimitersAroundIt) {
  for (const char* type : {"text/plain", "message/rfc822", ""}) {
    MessageFixture message(kTwoParts), text(std::string("Subject: t\r\n\r\n") + kTwoParts);
    auto* const part = *type ? newPart(kTwoParts) : nullptr;
    if (part) part->setContentType(type);
    ASSERT_EQ(message->appendChildEntity(part ? part : static_cast<VoMsgEntity*>(text->split())), kVoSuccess);
    MessageFixture again(written(*message));
    ASSERT_EQ(again->countChildEntity(), 3u) << type << ": " << written(*message);
    EXPECT_NE(written(*again).find(kTwoParts), std::string::npos) << written(*message);
  }
  MessageFixture message(kTwoParts);
  std::string raw = kTwoParts;
  ASSERT_EQ(message->getChildEntityAt(0)->setRawContent(resourceOver(raw).get(), nullptr, "8bit"), kVoSuccess);
  MessageFixture again(written(*message));
  EXPECT_EQ(contentOf(*again->getChildEntityAt(0)), kTwoParts) << written(*message);
}

// What a caller labelled a multipart is one when it gets children; content it had becomes the first of them.
TEST(MessageEdit, ALeafLabelledMultipartBecomesOne) {
  for (const char* start : {"", "Subject: s\n\n", "Content-Transfer-Encoding: base64\n\neA=="}) {
    MessageFixture message(start);
    ASSERT_EQ(message->setContentType("multipart/alternative"), kVoSuccess);
    for (int i = 0; i < 2; ++i) ASSERT_EQ(message->appendChildEntity(newPart("new")), kVoSuccess);
    MessageFixture again(written(*message));
    EXPECT_STREQ(again->getContentType(), "multipart/alternative");
    EXPECT_EQ(again->getEncoding(), nullptr);
    const unsigned count = message->countChildEntity();
    ASSERT_EQ(again->countChildEntity(), count) << written(*message);
    EXPECT_EQ(contentOf(*again->getChildEntityAt(count - 1)), "new");
    EXPECT_EQ(contentOf(*again->getChildEntityAt(0)), count == 2                                  ? "new"
                                                      : std::string_view(start).ends_with("eA==") ? "x"
                                                                                                  : "");
  }
  VoMsgRfc822Message composed;
  ASSERT_EQ(composed.setContentType("multipart/mixed; boundary=b"), kVoSuccess);
  for (int i = 0; i < 2; ++i) ASSERT_EQ(composed.appendChildEntity(newPart("new")), kVoSuccess);
  const std::string part = std::string("--b\r\n") + kNewPart + "\r\n";
  EXPECT_EQ(written(composed),
            "Content-Type: multipart/mixed;\r\n\tboundary=b\r\n\r\n"
            "This is a multi-part message in MIME format.\r\n" +
                part + part + "--b--\r\n");
}

// The line end of a close delimiter is its own, whatever ends the other lines.
TEST(MessageEdit, AMultipartEndsAtItsCloseDelimiter) {
  for (const std::string& end : {std::string("\n"), std::string("\r\n"), std::string("\r")})
    for (const std::string& others : {std::string("\n"), std::string("\r\n"), std::string("\r")}) {
      std::string text;
      for (const char* line : {"Content-Type: multipart/mixed; boundary=b", "", "--b",
                               "Content-Type: multipart/mixed; boundary=c", "", "--c", "", "one"})
        text += line + others;
      MessageFixture message(text + "--c--" + end + "--b" + others + others + "two" + others + "--b--" + others);
      auto& inner = dynamic_cast<VoMsgRfc822Entity&>(*message->getChildEntity());
      EXPECT_EQ(text.substr(inner.getBodyOffset()) + "--c--",
                (text + "--c--").substr(inner.getBodyOffset(), inner.getBodySize()));
    }
}

TEST(MessageEdit, AMessageThatWasNotUnderstoodIsNotCorrected) {
  const std::string text =
      "Content-Type: multipart/mixed; boundary=x; boundary=b\r\n\r\n--b\r\nContent-Type: text/plain\r\n"
      "Content-Type: text/html\r\n\r\nx\r\n--b--\r\n";
  MessageFixture message(text);
  EXPECT_EQ(message.code, kVoMalformed);
  EXPECT_EQ(written(*message), text);
}

TEST(MessageEdit, AnAttachmentIsNeverTheMainText) {
  MessageFixture message(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Disposition: attachment\r\n\r\nno\r\n--b\r\n"
      "Content-Type: text/html\r\n\r\nyes\r\n--b\r\nContent-Type: text/html\r\nContent-Disposition: attachment\r\n"
      "\r\nno\r\n--b--\r\n");
  for (const bool preferHtml : {false, true}) {
    VoMsgEntity* const body = message->_findMessageBody(preferHtml);
    EXPECT_EQ(body ? contentOf(*body) : "none", "yes");
  }
}

TEST(MessageEdit, ACopiedPartIsAnAddedOne) {
  MessageFixture message(kTwoParts);
  auto* const copy = new VoMsgMimeEntity;
  ASSERT_EQ(copy->copy(message->getChildEntityAt(0)), kVoSuccess);
  ASSERT_EQ(message->appendChildEntity(copy), kVoSuccess);
  EXPECT_EQ(written(*message), replaced(kTwoParts, "two\r\n", "two\r\n--b\r\n\r\none\r\n"));
}

TEST(MessageEdit, ARelabelledMultipartKeepsItsBytes) {
  MessageFixture message(kTwoParts);
  ASSERT_EQ(message->setHeaderValue("Content-Type", "text/plain", "us-ascii", nullptr), kVoSuccess);
  ASSERT_EQ(message->appendChildEntity(newPart("new")), kVoSuccess);
  const std::string body = std::string(kTwoParts).substr(std::string(kTwoParts).find("\r\n\r\n") + 4);
  EXPECT_NE(written(*message).find(body), std::string::npos) << written(*message);
  MessageFixture again(written(*message));
  EXPECT_EQ(contentOf(*again->getChildEntityAt(1)), "new");
}

TEST(MessageEdit, AResourceNameNamesThePart) {
  struct Row {
    const char *header, *type, *name, *filename;
  };
  for (const Row& row : {Row{"", "text/plain", "n.txt", nullptr}, Row{"", "image/png", "n.txt", "n.txt"},
                         Row{"Content-Disposition: inline\r\n", "text/plain", "n.txt", "n.txt"}}) {
    MessageFixture message(std::string(row.header) + "\r\nbody");
    std::string content = "x";
    const auto resource = resourceOver(content);
    resource->setResourceName("n.txt", "us-ascii");
    ASSERT_EQ(message->setContent(resource.get(), row.type, "base64"), kVoSuccess);
    EXPECT_STREQ(message->getRawHeaderParameterValue("Content-Type", "name"), row.name);
    EXPECT_STREQ(message->getRawHeaderParameterValue("Content-Disposition", "filename"), row.filename);
  }
}

// An edited nested message is written through its part, encoded as the part declares.
TEST(MessageEdit, NestedMessagesAreEncodedAgain) {
  for (const bool base64 : {false, true}) {
    const std::string inner = base64 ? "U3ViamVjdDogaW4NCg0KeA==\r\n" : "Subject: in\r\n\r\nx\r\n";
    MessageFixture message("Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: message/rfc822\r\n" +
                           std::string(base64 ? "Content-Transfer-Encoding: base64\r\n" : "") + "\r\n" + inner +
                           "--b\r\n\r\nlast\r\n--b--\r\n");
    ASSERT_EQ(entitiesOf(*message).size(), 4u);
    ASSERT_EQ(entitiesOf(*message)[2]->setHeaderValue("Subject", "out", "us-ascii", nullptr), kVoSuccess);
    MessageFixture again(written(*message));
    ASSERT_EQ(entitiesOf(*again).size(), 4u) << written(*message);
    EXPECT_STREQ(entitiesOf(*again)[2]->getHeaderValue("Subject", "utf-8"), "out");
    EXPECT_EQ(contentOf(*entitiesOf(*again)[3]), "last");
  }
}

}  // namespace
