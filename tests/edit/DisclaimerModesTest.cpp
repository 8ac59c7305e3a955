// The shapes that other tools are known to damage, and the contract of the call.
#include <gtest/gtest.h>

#include "tests/edit/EditFixture.h"
#include "tests/support/RememberingLog.h"

namespace vomsg::test {
namespace {

constexpr char kPlain[] = "Content-Type: text/plain; charset=us-ascii\r\n";
constexpr char kFlowed[] = "Content-Type: text/plain; charset=us-ascii; format=flowed\r\n";
constexpr char kLatin[] = "Content-Type: text/plain; charset=iso-8859-1\r\nContent-Transfer-Encoding: 8bit\r\n";
constexpr char kUtf8[] = "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n";
constexpr char kQuoted[] = "Content-Type: text/plain\r\nContent-Transfer-Encoding: quoted-printable\r\n";
constexpr char kBase64[] = "Content-Type: text/plain\r\nContent-Transfer-Encoding: base64\r\n";
constexpr char kUtf16[] = "Content-Type: text/plain; charset=utf-16\r\nContent-Transfer-Encoding: base64\r\n";
constexpr char kUtf32[] = "Content-Type: text/plain; charset=UTF-32BE\r\nContent-Transfer-Encoding: base64\r\n";
constexpr char kHtml[] = "Content-Type: text/html; charset=us-ascii\r\n";
constexpr char kCalendar[] = "Content-Type: text/calendar; charset=utf-8\r\n";

struct Row {
  const char* fields;
  const char* body;
  const char* disclaimer;
  int option;
  int position;
  const char* want;         // the decoded content afterwards
  const char* wantCharset;  // null: none
  const char* charset = "utf-8";
};

#define TABLE(text) "<table><tr><td bgcolor=#ffffff><font color=#000000>" text "</font></td></tr></table>"
constexpr Row kRows[] = {
    {kPlain, "last line open", "D", 0, 2, "last line open\r\nD\r\n", "us-ascii"},
    {kPlain, "text\r\n", "D\n", 0, 9, "text\r\nD\r\n", "us-ascii"},
    {kPlain, "text\r\n", "D", 0, 1, "D\r\ntext\r\n", "us-ascii"},
    {"", "no type\r\n", "D", 0, 2, "no type\r\nD\r\n", "us-ascii"},
    {"", "no type \xC3\xA4", "D", 0, 2, "no type \xC3\xA4\r\nD\r\n", "utf-8"},
    {"", "\x1B$BF|\x1B(B", "\xE6\x97\xA5", 0, 2, "\x1B$BF|\x1B(B\r\n\x1B$BF|\x1B(B\r\n\x1B(B", "iso-2022-jp"},
    {kUtf8, "\xC3\xA4", "\xE4", 0, 2, "\xC3\xA4\r\n\xC3\xA4\r\n", "utf-8", "iso-8859-1"},
    {kLatin, "\xE4", "\xC3\xA4", 0, 2, "\xE4\r\n\xE4\r\n", "iso-8859-1"},
    {kLatin, "\xE4", "\xE6\x97\xA5", 0, 1, "\xE6\x97\xA5\r\n\xC3\xA4", "utf-8"},
    {kPlain, "x", "\xC3\xA4", 0, 2, "x\r\n\xC3\xA4\r\n", "utf-8"},
    {kUtf16, "//7kAAoA", "D", 0, 2, "\xC3\xA4\nD\r\n", "utf-8"},
    {kUtf16, "4wQKAA==", "D", 0, 1, "D\r\n\xD3\xA3\n", "utf-8"},  // no byte order mark, little-endian
    {kUtf32, "AAH2AAAAAAo=", "D", 0, 2, "\xF0\x9F\x98\x80\nD\r\n", "utf-8"},
    {kFlowed, "soft \r\n", "D", 0, 2, "soft \r\nD\r\n", "us-ascii"},
    {kQuoted, "a=3D=20=\r\n", "D", 0, 2, "a= \r\nD\r\n", nullptr},
    {kQuoted, "a=0Ab=\r\n", "D", 0, 2, "a\nb\r\nD\r\n", nullptr},
    {kBase64, "dGV4dA==\r\n", "D", 0, 2, "text\r\nD\r\n", nullptr},
    {kHtml, "<p>x", "a<b&\"\n2", 4, 2, "<p>x" TABLE("a&lt;b&amp;&quot;<br>2"), "us-ascii"},
    {kHtml, "<script>'</body>'</script>x</BODY\n><!-- </body> -->", "D", 4, 2,
     "<script>'</body>'</script>x" TABLE("D") "</BODY\n><!-- </body> -->", "us-ascii"},
    {kHtml, "<head><body a='>'>x", "D", 4, 1, "<head><body a='>'>" TABLE("D") "x", "us-ascii"},
    {kHtml, "<head></head>x</html>", "D", 4, 1, "<head></head>" TABLE("D") "x</html>", "us-ascii"},
    {kHtml, "x</html>\n", "D", 4, 2, "x" TABLE("D") "</html>\n", "us-ascii"},
    {kHtml, "x<!-- open </body>", "D", 4, 2, "x" TABLE("D") "<!-- open </body>", "us-ascii"},
    {kCalendar,
     "BEGIN:VEVENT\r\nDESCRIPTION;X=\"a:b\":one\r\n  two\r\nBEGIN:VALARM\r\nDESCRIPTION:alarm\r\nEND:VALARM\r\n", "D",
     0, 2,
     "BEGIN:VEVENT\r\nDESCRIPTION;X=\"a:b\":one two\\n*~*~*~*~*~*~*~*~*~*\\nD\r\nBEGIN:VALARM\r\nDESCRIPTION:alarm\r\n"
     "END:VALARM\r\n",
     "utf-8"},
    {kCalendar, "BEGIN:VEVENT\r\nEND:VEVENT\r\n", "D", 0, 1, "BEGIN:VEVENT\r\nDESCRIPTION:D\r\nEND:VEVENT\r\n",
     "utf-8"},
};

TEST(DisclaimerInText, KnownShapes) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(std::string(row.fields) + row.body);
    MessageFixture message("Subject: s\r\nMIME-Version: 1.0\r\n" + std::string(row.fields) + "\r\n" + row.body);
    ASSERT_EQ(insert(*message, row.disclaimer, row.option, row.position, row.charset), kVoSuccess);
    const std::string after = written(*message);
    MessageFixture again(after);
    EXPECT_EQ(contentOf(*again), row.want);
    EXPECT_STREQ(again->getCharset(), row.wantCharset);
    EXPECT_EQ(occurrences(after, "format=flowed"), row.fields == kFlowed ? 1u : 0u);
    EXPECT_EQ(occurrences(after, "\n"), occurrences(after, "\r\n") + occurrences(row.body, "\n") -
                                            occurrences(row.body, "\r\n"));  // none that servers would refuse
  }
}

// Decoded, inserted and encoded anew, a text must not cut the message that it stands in.
TEST(DisclaimerInText, NoTextLooksLikeADelimiter) {
  const std::string head = "Content-Type: multipart/mixed; boundary=\"--\"\r\n\r\n----\r\nContent-Transfer-Encoding: ";
  for (const char* text : {"quoted-printable\r\n\r\n=2D---\r\nx", "7bit\r\n\r\nx"}) {
    MessageFixture message(head + text + "\r\n----\r\nContent-Type: image/png\r\n\r\nkept\r\n------\r\n");
    const std::string before = contentOf(*message->getChildEntity());
    ASSERT_EQ(insert(*message, "----\nD", 0), kVoSuccess);
    MessageFixture again(written(*message));
    ASSERT_EQ(again->countChildEntity(), 2u);
    EXPECT_EQ(contentOf(*again->getChildEntity()), before + "\r\n----\r\nD\r\n");
    EXPECT_EQ(contentOf(*again->getChildEntityAt(1)), "kept");
  }
}

TEST(DisclaimerWrap, AMalformedOriginalIsThereAndCanBeEdited) {
  const std::string original = "Received: by x\r\nX-Own: 1\r\nDropped line\r\nFrom: a@example.org\r\n\r\n\x80 8-bit\n";
  MessageFixture message(original);
  ASSERT_EQ(insert(*message, "D", 2), kVoSuccess);
  EXPECT_TRUE(message->isModified());
  MessageFixture again(written(*message));
  ASSERT_EQ(again->countChildEntity(), 2u);
  EXPECT_EQ(contentOf(*again->getChildEntityAt(1)), original);
  EXPECT_STREQ(again->getChildEntityAt(1)->getEncoding(), "8bit");
  EXPECT_STREQ(again->getChildEntityAt(1)->getFileName("us-ascii"), "originalmail.eml");
  VoMsgEntity* const inner = message->getChildEntityAt(1)->getChildEntity();
  ASSERT_EQ(inner->setHeaderValue("X-Own", "2", "us-ascii", nullptr), kVoSuccess);
  EXPECT_NE(written(*message).find("X-Own: 2"), std::string::npos);
}

// A signature over content that only moved still holds, and stripping leaves it.
TEST(DisclaimerNewBody, SignedContentMovesAsItIs) {
  const std::string body = "--b\r\n\r\nx\r\n--b\r\nContent-Type: application/pgp-signature\r\n\r\nsig\r\n--b--\r\nend";
  for (const int option : {1, 0x82}) {
    MessageFixture message("Content-Type: multipart/signed; micalg=m; boundary=b\r\n\r\n" + body);
    ASSERT_EQ(insert(*message, "D", option, kVoDisclaimerTop), kVoSuccess);
    ASSERT_EQ(message->stripSignaturePart(), kVoSuccess);
    EXPECT_NE(written(*message).find("\r\n\r\n" + body), std::string::npos);
    EXPECT_STREQ(message->getChildEntityAt(option == 1 ? 1 : 0)->getContentType(), "multipart/signed");
  }
}

// An invitation in a message that is attached as a file is not what the reader is shown.
TEST(DisclaimerInText, WhatIsAttachedIsNoTarget) {
  MessageFixture message(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\ntext\r\n"
      "--b\r\nContent-Type: application/octet-stream; name=a.eml\r\n\r\nContent-Type: text/calendar\r\n\r\n"
      "BEGIN:VEVENT\r\nEND:VEVENT\r\n\r\n--b\r\nContent-Type: multipart/digest; "
      "boundary=d\r\n\r\n--d\r\n\r\n\r\n--d--\r\n"
      "--b--\r\n");
  ASSERT_EQ(insert(*message, "D", 0), kVoSuccess);
  EXPECT_EQ(contentOf(*message->getChildEntity()), "text\r\nD\r\n");
}

TEST(DisclaimerContract, RefusalsChangeNothing) {
  for (const char* bytes : {"Content-Type: application/pdf\r\nContent-Transfer-Encoding: base64\r\n\r\nAAAA",
                            "Content-Type: multipart/encrypted; boundary=b\r\n\r\n--b\r\n\r\nx\r\n--b--\r\n"}) {
    MessageFixture message(bytes);
    EXPECT_EQ(insert(*message, "D", 0), kVoDisclaimerRefused);
    EXPECT_EQ(written(*message), bytes);
    EXPECT_EQ(insert(*message, "D", 8), kVoSuccess);  // wrapped
  }
  MessageFixture message("Subject: s\r\n\r\nx");
  Text text("D");
  EXPECT_EQ(message->insertDisclaimerMessage(kVoDisclaimerTop, nullptr, 0, "utf-8", nullptr), kVoBadArgument);
  EXPECT_EQ(message->insertDisclaimerMessage(kVoDisclaimerTop, text.get(), 0, nullptr, nullptr), kVoBadArgument);
  EXPECT_EQ(insert(*message, "\x80", 0, 2, "us-ascii"), kVoSuccess);  // as a body of its own, as it came
  EXPECT_EQ(contentOf(*message->getChildEntityAt(1)), "\x80");
  // ASCII under a wrong label would become Chinese, and what converters drop would be lost.
  for (const char* charset : {"utf-16", "shift_jis"}) {
    MessageFixture mislabelled("Content-Type: text/plain; charset=" + std::string(charset) + "\r\n\r\nab\x81");
    EXPECT_EQ(mislabelled->_defaultDisclaimerMessage(kVoDisclaimerTop, text.get(), "utf-8", "utf-8"),
              kVoConversionFailed);
  }
}

struct LogRow {
  const char* fields;
  int option;
  const char* prefer;
  const char* lines;  // behind those that every call leaves; "9 " for the usual level
};
constexpr char kAlternative[] = "Content-Type: multipart/alternative; boundary=b\r\n";
constexpr LogRow kLogRows[] = {
    {kPlain, 0, nullptr,
     "9 content type           : [text/plain]\n9 begin: _defaultDisclaimerMessage\n"
     "9 end  : _defaultDisclaimerMessage\n9 end  : insertDisclaimerMessage\n"},
    {"", 1, nullptr,
     "9 content type           : [no content type]\n9 begin: _newDisclaimerMessage\n"
     "9 end  : _newDisclaimerMessage\n9 end  : insertDisclaimerMessage\n"},
    {kAlternative, 0, nullptr,
     "9 HTML mail is wrapped. Option is automatically Wrap_New.\n"
     "9 content type           : [multipart/alternative]\n9 begin: _wrapNewDisclaimerMessage\n"
     "9 end  : _wrapNewDisclaimerMessage\n9 end  : insertDisclaimerMessage\n"},
    {kAlternative, 4, "utf-8",
     "9 content type           : [multipart/alternative]\n"
     "9 begin: _defaultDisclaimerMessageHTML\n9 end  : _defaultDisclaimerMessageHTML\n1 insertDisclaimerMessage "
     "failed.\n"},
    {"Content-Type: text/calendar\r\n", 8, nullptr,
     "9 content type           : [text/calendar]\n"
     "9 begin: _defaultDisclaimerMessageTextCalendar\n9 end  : _defaultDisclaimerMessageTextCalendar\n"
     "9 begin: _wrapNewDisclaimerMessage\n9 end  : _wrapNewDisclaimerMessage\n9 end  : insertDisclaimerMessage\n"},
    {kPlain, 2, nullptr,
     "9 content type           : [text/plain]\n9 begin: _wrapDisclaimerMessage\n"
     "9 end  : _wrapDisclaimerMessage\n9 end  : insertDisclaimerMessage\n"},
    {kPlain, 0x83, nullptr,
     "9 content type           : [text/plain]\n9 begin: _DisclaimerMessageAttachment\n"
     "9 end  : _DisclaimerMessageAttachment\n9 end  : insertDisclaimerMessage\n"},
    {kPlain, 0, "no/charset", "1 invalid preferCharset:no/charset\n"},
};

TEST(DisclaimerContract, LogLines) {
  for (const LogRow& row : kLogRows) {
    RememberingLog log;
    MessageFixture message(std::string(row.fields) + "\r\n--b--");
    const std::string tag = std::string(message->_getUUIDString()) + " ";
    insert(*message, "D", row.option, 2, "utf-8", row.prefer);
    std::string lines;
    for (const RememberingLog::Line& line : log.debug) {
      if (line.func.find("isclaimer") == line.func.npos) continue;
      EXPECT_EQ(line.file, "VoMsgRfc822Message");
      const std::string text = line.text.substr(line.text.find(tag) + tag.size());
      lines += std::to_string(line.level) + " " + text + "\n";
      EXPECT_TRUE(text.substr(0, 7) != "begin: " || text.substr(7) == line.func) << text;
    }
    const std::string prefer = row.prefer ? row.prefer : "";
    EXPECT_EQ(lines, "9 begin: insertDisclaimerMessage\n9 VoMsgDisclaimerOption_e: [" + std::to_string(row.option) +
                         "]\n9 srcCharset                : [utf-8]\n9 preferCharset                : [" + prefer +
                         "]\n" + row.lines);
  }
}

}  // namespace
}  // namespace vomsg::test
