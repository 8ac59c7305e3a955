#include <gtest/gtest.h>

#include <string>

#include "tests/header/HeaderBlocks.h"
#include "vomsg/header/VoMsgHeaderLineWriter.h"

namespace {

using vomsg::test::KeepOptions;
using vomsg::test::LimitedWriter;
using vomsg::test::parseBlock;
using vomsg::test::written;

std::string folded(const std::string& text, unsigned column, bool isAddressList = false) {
  LimitedWriter writer;
  EXPECT_EQ(vomsg::detail::WriteLine76(&writer, text.data(), static_cast<unsigned>(text.size()), column, isAddressList),
            kVoSuccess);
  EXPECT_TRUE(writer.flush());
  return writer.text;
}

std::string x(std::size_t n, char c = 'x') { return std::string(n, c); }

TEST(HeaderLineWriter, FoldsAt76Columns) {
  const std::string fold = "\r\n\t", word = "=?utf-8?Q?" + x(40) + "?=";
  struct Row {
    std::string text;
    unsigned column;
    bool isAddressList;
    std::string want;
  };
  const Row rows[] = {
      {x(76), 0, false, x(76)},
      {x(70) + " " + x(10), 0, false, x(70) + " " + fold + x(10)},
      {x(76) + " " + x(9), 0, false, x(76) + fold + " " + x(9)},  // followed by a space
      {x(75) + " " + x(9), 0, false, x(75) + " " + fold + x(9)},  // ends with one
      {" " + x(90), 0, false, " " + x(75) + fold + x(15)},        // only blanks before the space
      {x(125), 0, false, x(125)},                                 // unbreakable, still fits
      {x(126), 0, false, x(76) + fold + x(50)},
      {x(116), 9, false, x(116)},
      {x(117), 9, false, x(67) + fold + x(50)},
      {x(90), 80, false, fold + x(90)},  // no room: a piece of nothing
      {x(40) + "," + x(30) + ", " + x(20), 0, true, x(40) + "," + x(30) + "," + fold + " " + x(20)},
      {x(40) + "," + x(60), 0, true, x(40) + "," + x(60)},  // a comma and no space: 126 counts
      {"a\r\n  b\n\n\tc\r", 5, false, "a" + fold + "b" + fold + "c"},
      {"\r\na", 0, false, "a"},
      {x(20) + " " + word, 0, false, x(20) + " " + word},
      {x(30) + " " + word, 0, false, x(30) + " " + fold + word},
      {word + "\",,; b " + x(3), 0, false, word + "\",,;" + fold + "b xxx"},
      {word, 40, false, fold + word},
      {word + " " + word, 1, false, word + fold + word},
      {x(100) + word, 0, false, x(76) + fold + x(24) + fold + word},
      {"=?utf-8?Q?" + x(200) + "?=", 0, false, "=?utf-8?Q?" + x(200) + "?="},  // never split
      {"=?utf-8?Q" + x(90) + " ", 0, false, "=?utf-8?Q" + x(90) + " "},        // no word
  };
  for (const Row& row : rows) EXPECT_EQ(folded(row.text, row.column, row.isAddressList), row.want) << row.text;
}

TEST(HeaderBlockWriter, WritesAnew) {
  const KeepOptions keep;
  struct Row {
    std::string text;
    std::string want;  // without the line end of the last field and the empty line
  };
  const std::string longText = x(60) + " " + x(60), q = "=?utf-8?Q?";
  const Row rows[] = {
      {"A:b\n c\nB \t: \t d", "A: bc\r\nB: d"},
      {": x", ": x"},
      {"X: " + longText, "X: " + x(60) + " \r\n\t" + x(60)},
      {"Message-ID: " + longText, "Message-ID: " + longText},
      {"Reply-To: " + longText + q + "a?=", "Reply-To: " + longText + q + "a?="},
      // Encoded words: spelled anew, unless a reader would see something else.
      {"X: =?UTF-8?q?a?= =?utf8?B?Yg==?=", "X: " + q + "ab?="},
      {"Sender: =?UTF-8?q?a?=", "Sender: =?UTF-8?q?a?="},
      {"Subject: =?UTF-8?q?a?=", "Subject: =?UTF-8?q?a?="},
      {"Received: =?UTF-8?q?a?=", "Received: " + q + "a?="},
      {"X: =?utf-8?q?a?= =?utf-8?q", "X: " + q + "a=3D=3Futf=2D8=3Fq?="},  // what is cut off is text
      {"X: =?utf-8*de?q?a?=", "X: " + q + "a?="},
      {"Subject: =?utf-8*de?q?a?=", "Subject: =?utf-8*de?q?a?="},
      {"X: =?utf-8?q?a?= =?iso-8859-1?q?b?=", "X: =?utf-8?q?a?=\r\n\t=?iso-8859-1?q?b?="},
      {"X: =?utf-8?q?a=0D=0AEvil:_b?=", "X: =?utf-8?q?a=0D=0AEvil:_b?="},
      {"X: =?utf-8?q?a=00b?=", "X: =?utf-8?q?a=00b?="},
      {"X: =?utf-8?b?YQBi?=", "X: =?utf-8?b?YQBi?="},
      {"X: =?us-ascii?q?=3D=3Futf-8=3FQ=3Fa=3F=3D?=", "X: =?us-ascii?q?=3D=3Futf-8=3FQ=3Fa=3F=3D?="},
      {"X: =?us-ascii?q?=E4?=", "X: =?us-ascii?q?=E4?="},
      {"Resent-To: =?utf-8?q?a?= <b@c>", "Resent-To: =?utf-8?q?a?=\r\n\t<b@c>"},
      {"X: http://a/?b=?c&d", "X: http://a/?b=?c&d"},
      // Addresses: one list a name, one address a line.
      {"To: a , b;c\nX: y\nTo: d", "To: a , b;c, d\r\nX: y"},
      {"To: a ,\"b;\" <c>\nX: y\nTO: d", "To: a ,\r\n\t\"b;\" <c>,\r\n\td\r\nX: y"},
      {"Cc: undisclosed-recipients:;", "Cc: undisclosed-recipients:;"},
      {"Bcc: g: a, b;, c", "Bcc: g: a, b;, c"},
      {"From: =?utf-8?q?a?= <b@c>, d", "From: =?utf-8?q?a?=\r\n\t<b@c>,\r\n\td"},
      {"To:", "To: "},
      {"To: a\nTo: \"b\nTo: c, d", "To: a,\r\n\t\"b, c, d"},
      // Structured values; the last Content-Type counts.
      {"Content-Type: a\nX: y\nContent-Type: b", "X: y\r\nContent-Type: b"},
      {"Content-Type: \"a/b; boundary=x\"", "Content-Type: \"a/b; boundary=x\""},
      {"Content-Type: a ; b=c;d=\"e f\" ;g=\"\\\\\\\"\"",
       "Content-Type: a;\r\n\tb=c;\r\n\td=\"e f\";\r\n\tg=\"\\\\\\\"\""},
      {"Content-Type: a; boundary=b c", "Content-Type: a;\r\n\tboundary=\"b c\""},
      {"Content-Type: a; boundary=b?c", "Content-Type: a;\r\n\tboundary=b?c"},
      {"Content-Type: a; boundary=b=c", "Content-Type: a;\r\n\tboundary=\"b=c\""},
      {"Content-Type: a; boundary=\"\"", "Content-Type: a;\r\n\tboundary=\"\\\"\""},
      {"Content-Type: a; boundary=\"" + longText + "\"", "Content-Type: a;\r\n\tboundary=\"" + longText + "\""},
      {"Content-Type: a; b=\"" + longText + "\"", "Content-Type: a;\r\n\tb=\"" + x(60) + " \r\n\t" + x(60) + "\""},
      {"Content-Type: a; b=\"\"", "Content-Type: a;\r\n\tb=\"\""},
  };
  for (const Row& row : rows) {
    const auto header = parseBlock(row.text + "\r\n\r\n");
    header->setEdited();
    const std::string out = written(*header);
    EXPECT_EQ(out, row.want + "\r\n\r\n") << row.text;
    // What was written is read back as it was, and writing that gives the same bytes.
    const auto again = parseBlock(out);
    again->setEdited();
    EXPECT_EQ(written(*again), out);
  }
  VoMsgEntityHeader empty;
  EXPECT_EQ(written(empty), "\r\n");

  VoMsgExtraOption = kVoOptionRawSubject;
  const std::string subject = "Subject: " + longText + "\r\n\r\n";
  EXPECT_EQ(written(*parseBlock(subject)), subject);
}

TEST(HeaderBlockWriter, WritesWhatCallersSet) {
  const auto header = parseBlock("Subject: old\r\nX: y\r\nContent-Type: a\r\nTo: b\r\n\r\n");
  VoMsgHeaderField& subject = *header->getHeader("Subject");
  ASSERT_EQ(subject.setFieldValue("J\xC3\xB6rg, a\r\nEvil: b", "utf-8", nullptr), kVoSuccess);
  ASSERT_EQ(header->getHeader("X")->setFieldValue("a\r\n\r\nEvil: b", "us-ascii", nullptr), kVoSuccess);
  header->getHeader("Content-Type")->setParameterValue("n", "a\r\n\r\nEvil: b", "us-ascii", nullptr);
  header->getHeader("Content-Type")->appendRawParameter("m\r\n\r\nEvil: ", "c\r\n\r\nEvil: d", false, nullptr);
  header->getHeader("Content-Type")->appendRawParameter("boundary", "c\r\n\r\nEvil: d", false, nullptr);
  for (const char* const name : {"\r\n\r\nEvil", "X Y", "X:Y", "X\x7F", "J\xC3\xB6rg", "", "X\t"}) {
    const auto field = std::make_unique<VoMsgHeaderField>(name, "a");
    EXPECT_EQ(header->appendHeader(field.get()), kVoBadArgument) << name;
    EXPECT_EQ(header->insertHeaderAt(field.get(), 0), kVoBadArgument) << name;
    EXPECT_EQ(header->setHeaderValue(name, "a", nullptr, nullptr), kVoBadArgument) << name;
  }
  ASSERT_EQ(header->appendHeader(new VoMsgHeaderField("Message-ID", "a\r\nEvil: b\r\n\r\n")), kVoSuccess);
  ASSERT_EQ(header->appendAddress("To", "c\r\n\r\nEvil: b"), kVoSuccess);
  ASSERT_EQ(header->setAddressList("Cc", "a\r\n\r\nEvil: b\r\n"), kVoSuccess);
  const std::string out = written(*header);
  const auto again = parseBlock(out);
  EXPECT_EQ(again->getHeaderSize(), out.size());
  EXPECT_EQ(again->countHeaders(), 6u) << out;
  EXPECT_EQ(again->getHeader("Evil"), nullptr);
  EXPECT_FALSE(again->isNewHeader());
  EXPECT_STREQ(again->getHeader("Subject")->getFieldValue("utf-8"), subject.getFieldValue("utf-8"));
  EXPECT_NE(out.find("Subject: =?utf-8?Q?J=C3=B6rg"), out.npos);
}

TEST(HeaderBlockWriter, StopsAtTheFirstRefusedWrite) {
  const auto header = parseBlock("A: b\r\nC: d\r\n\r\n");
  header->setEdited();
  const std::size_t whole = written(*header).size();
  for (std::size_t limit = 0; limit + 1 < whole; ++limit) {
    LimitedWriter writer(limit, 1);
    EXPECT_EQ(header->writeNewHeaderPart(&writer), kVoWriteFailed);
    EXPECT_EQ(writer.text.size(), limit);
  }
  EXPECT_EQ(header->writeNewHeaderPart(nullptr), kVoBadArgument);
}

}  // namespace
