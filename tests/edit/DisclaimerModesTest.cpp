// The shapes that other tools are known to damage, and the contract of the call.
#include <gtest/gtest.h>

#include "tests/edit/EditFixture.h"

namespace vomsg::test {
namespace {

std::string textMessage(std::string_view fields, std::string_view body) {
  return "Subject: s\r\nMIME-Version: 1.0\r\n" + std::string(fields) + "\r\n" + std::string(body);
}

struct Row {
  const char* fields;
  const char* body;
  const char* disclaimer;
  const char* charset;
  int option;
  int position;
  const char* want;         // the decoded content afterwards
  const char* wantCharset;  // null: none
};

TEST(DisclaimerInText, KnownShapes) {
  constexpr const char* kPlain = "Content-Type: text/plain; charset=us-ascii\r\n";
  constexpr const char* kLatin = "Content-Type: text/plain; charset=iso-8859-1\r\nContent-Transfer-Encoding: 8bit\r\n";
  constexpr const char* kUtf8 = "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n";
  constexpr const char* kHtml = "Content-Type: text/html; charset=us-ascii\r\n";
#define TABLE(text) "<table><tr><td bgcolor=#ffffff><font color=#000000>" text "</font></td></tr></table>"
  const Row rows[] = {
      {kPlain, "last line open", "D", "utf-8", 0, 2, "last line open\r\nD\r\n", "us-ascii"},
      {kPlain, "text\r\n", "D\n", "utf-8", 0, 9, "text\r\nD\r\n", "us-ascii"},
      {kPlain, "text\r\n", "D", "utf-8", 0, 1, "D\r\ntext\r\n", "us-ascii"},
      {"", "no type\r\n", "D", "us-ascii", 0, 2, "no type\r\nD\r\n", "us-ascii"},
      {kUtf8, "\xC3\xA4", "\xE4", "iso-8859-1", 0, 2, "\xC3\xA4\r\n\xC3\xA4\r\n", "utf-8"},
      {kLatin, "\xE4", "\xC3\xA4", "utf-8", 0, 2, "\xE4\r\n\xE4\r\n", "iso-8859-1"},
      {kLatin, "\xE4", "\xE6\x97\xA5", "utf-8", 0, 1, "\xE6\x97\xA5\r\n\xC3\xA4", "utf-8"},
      {kPlain, "x", "\xC3\xA4", "utf-8", 0, 2, "x\r\n\xC3\xA4\r\n", "utf-8"},
      {"Content-Type: text/plain; charset=us-ascii; format=flowed\r\n", "soft \r\n", "D", "utf-8", 0, 2,
       "soft \r\nD\r\n", "us-ascii"},
      {"Content-Type: text/plain\r\nContent-Transfer-Encoding: quoted-printable\r\n", "a=3D=20=\r\n", "D", "utf-8", 0,
       2, "a= \r\nD\r\n", nullptr},
      {"Content-Type: text/plain\r\nContent-Transfer-Encoding: base64\r\n", "dGV4dA==\r\n", "D", "utf-8", 0, 2,
       "text\r\nD\r\n", nullptr},
      {kHtml, "<p>x", "a<b&\"\n2", "utf-8", 4, 2, "<p>x" TABLE("a&lt;b&amp;&quot;<br>2"), "us-ascii"},
      {kHtml, "<script>'</body>'</script>x</BODY\n><!-- </body> -->", "D", "utf-8", 4, 2,
       "<script>'</body>'</script>x" TABLE("D") "</BODY\n><!-- </body> -->", "us-ascii"},
      {kHtml, "<head><body a='>'>x", "D", "utf-8", 4, 1, "<head><body a='>'>" TABLE("D") "x", "us-ascii"},
      {kHtml, "<head></head>x</html>", "D", "utf-8", 4, 1, "<head></head>" TABLE("D") "x</html>", "us-ascii"},
      {kHtml, "x</html>\n", "D", "utf-8", 4, 2, "x" TABLE("D") "</html>\n", "us-ascii"},
      {kHtml, "x<!-- open </body>", "D", "utf-8", 4, 2, "x" TABLE("D") "<!-- open </body>", "us-ascii"},
      {"Content-Type: text/calendar; charset=utf-8\r\n",
       "BEGIN:VEVENT\r\nDESCRIPTION:one\r\n  two\r\nBEGIN:VALARM\r\nDESCRIPTION:alarm\r\nEND:VALARM\r\nEND:VEVENT\r\n",
       "D;1\n2", "utf-8", 0, 2,
       "BEGIN:VEVENT\r\nDESCRIPTION:one two\\n*~*~*~*~*~*~*~*~*~*\\nD\\;1\\n2\r\nBEGIN:VALARM\r\nDESCRIPTION:alarm\r\n"
       "END:VALARM\r\nEND:VEVENT\r\n",
       "utf-8"},
      {"Content-Type: text/calendar\r\n", "BEGIN:VEVENT\r\nEND:VEVENT\r\n", "D", "utf-8", 0, 1,
       "BEGIN:VEVENT\r\nDESCRIPTION:D\r\nEND:VEVENT\r\n", nullptr},
      {"", "no type \xC3\xA4", "D", "utf-8", 0, 2, "no type \xC3\xA4\r\nD\r\n", "utf-8"},
      {"", "\x1B$BF|K\\\x1B(B", "\xE6\x97\xA5", "utf-8", 0, 2, "\x1B$BF|K\\\x1B(B\r\n\x1B$BF|\x1B(B\r\n\x1B(B",
       "iso-2022-jp"},
      {"Content-Type: text/plain; charset=utf-16\r\nContent-Transfer-Encoding: base64\r\n", "//7kAAoA", "D", "utf-8", 0,
       2, "\xC3\xA4\nD\r\n", "utf-8"},
      {"Content-Type: text/plain; charset=UTF-16\r\nContent-Transfer-Encoding: base64\r\n", "4wQKAA==", "D", "utf-8", 0,
       1, "D\r\n\xD3\xA3\n", "utf-8"},
      {"Content-Type: text/plain; charset=utf-32be\r\nContent-Transfer-Encoding: base64\r\n", "AAH2AAAAAAo=", "D",
       "utf-8", 0, 2, "\xF0\x9F\x98\x80\nD\r\n", "utf-8"},
      {"Content-Type: text/plain\r\nContent-Transfer-Encoding: quoted-printable\r\n", "a=0Ab=\r\n", "D", "utf-8", 0, 2,
       "a\nb\r\nD\r\n", nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.fields) + row.body);
    MessageFixture message(textMessage(row.fields, row.body));
    ASSERT_EQ(insert(*message, row.disclaimer, row.option, row.position, row.charset), kVoSuccess);
    MessageFixture again(written(*message));
    EXPECT_EQ(contentOf(*again), row.want);
    EXPECT_STREQ(again->getCharset(), row.wantCharset);
    EXPECT_EQ(written(*message).find("format=flowed") != std::string::npos,
              std::string(row.fields).find("flowed") != std::string::npos);
  }
}

// Decoded, inserted and encoded anew, a text must not cut the message that it stands in.
TEST(DisclaimerInText, NoTextLooksLikeADelimiter) {
  const std::string head = "Content-Type: multipart/mixed; boundary=\"--\"\r\n\r\n----\r\nContent-Transfer-Encoding: ";
  const std::string tail = "\r\n----\r\nContent-Type: image/png\r\n\r\nkept\r\n------\r\n";
  for (const char* text : {"quoted-printable\r\n\r\n=2D---\r\nx", "7bit\r\n\r\nx"}) {
    MessageFixture message(head + text + tail);
    const std::string before = contentOf(*message->getChildEntity());
    ASSERT_EQ(insert(*message, "----\nD", 0), kVoSuccess);
    MessageFixture again(written(*message));
    ASSERT_EQ(again->countChildEntity(), 2u);
    EXPECT_EQ(contentOf(*again->getChildEntity()), before + "\r\n----\r\nD\r\n");
    EXPECT_EQ(contentOf(*again->getChildEntityAt(1)), "kept");
  }
}

TEST(DisclaimerInText, CalendarLinesFoldBetweenCharacters) {
  std::string description;
  for (int i = 0; i < 60; ++i) description += "\xE6\x97\xA5";
  MessageFixture message(
      textMessage("Content-Type: text/calendar; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n",
                  "BEGIN:VEVENT\r\nDESCRIPTION:" + description + "\r\nEND:VEVENT\r\n"));
  ASSERT_EQ(insert(*message, "\xC3\xA4", 0), kVoSuccess);
  std::string text = contentOf(*message);
  EXPECT_GE(occurrences(text, "\r\n "), 2u);
  for (std::size_t begin = 0, end; (end = text.find("\r\n", begin)) != text.npos; begin = end + 2) {
    EXPECT_LE(end - begin, 75u);
    EXPECT_NE(static_cast<unsigned char>(text[begin + (text[begin] == ' ')]) & 0xC0, 0x80);
  }
  for (std::size_t at; (at = text.find("\r\n ")) != text.npos;) text.erase(at, 3);
  EXPECT_NE(text.find(description + "\\n*~*~*~*~*~*~*~*~*~*\\n\xC3\xA4\r\n"), text.npos);
}

// A bundle of forwarded messages: the one text of its own takes it, all else is untouched.
TEST(DisclaimerInText, ForwardedMessagesStayAsTheyAre) {
  std::string rest;
  for (int i = 0; i < 18; ++i)
    rest += "--b\r\nContent-Type: message/rfc822\r\n\r\nSubject: " + std::to_string(i) + "\r\n\r\ntext\r\n";
  const std::string head = "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nsee below";
  MessageFixture message(head + "\r\n" + rest + "--b--\r\n");
  ASSERT_EQ(insert(*message, "D", 0), kVoSuccess);
  EXPECT_EQ(written(*message), head + "\r\nD\r\n\r\n" + rest + "--b--\r\n");
}

TEST(DisclaimerWrap, TheOriginalIsThereByteForByte) {
  const std::string original = "Received: by x\r\nX-Own: 1\r\nDropped line\r\nFrom: a@example.org\r\n\r\n\x80 8-bit\n";
  for (const int mode : {2, 3}) {
    MessageFixture message(original);
    ASSERT_EQ(insert(*message, "D", mode), kVoSuccess);
    EXPECT_TRUE(message->isModified());
    const std::string once = written(*message);
    MessageFixture again(once);
    ASSERT_EQ(again->countChildEntity(), 2u);
    EXPECT_EQ(contentOf(*again->getChildEntityAt(0)), "D\r\n");
    VoMsgEntity& part = *again->getChildEntityAt(1);
    EXPECT_EQ(contentOf(part), original);
    EXPECT_STREQ(part.getEncoding(), "8bit");
    EXPECT_STREQ(part.getFileName("us-ascii"), "originalmail.eml");
    EXPECT_EQ(again->getHeader("X-Own") != nullptr, mode == 2);
    EXPECT_STREQ(again->getHeaderValue("Received", "us-ascii"), "by x");
    // An edit inside the wrapped message is written through its part.
    ASSERT_EQ(message->getChildEntityAt(1)->getChildEntity()->setHeaderValue("X-Own", "2", "us-ascii", nullptr),
              kVoSuccess);
    EXPECT_NE(written(*message).find("X-Own: 2"), std::string::npos);
  }
}

// A signature over content that only moved still holds, and stripping leaves it.
TEST(DisclaimerNewBody, SignedContentMovesAsItIs) {
  const std::string body =
      "--b\r\n\r\nx\r\n--b\r\nContent-Type: application/pgp-signature\r\n\r\nsig\r\n--b--\r\nepilogue";
  for (const int option : {1, 0x82}) {
    MessageFixture message("Content-Type: multipart/signed; micalg=m; boundary=b\r\n\r\n" + body);
    ASSERT_EQ(insert(*message, "D", option, kVoDisclaimerTop), kVoSuccess);
    ASSERT_EQ(message->stripSignaturePart(), kVoSuccess);
    MessageFixture again(written(*message));
    ASSERT_EQ(again->countChildEntity(), 2u);
    EXPECT_STREQ(again->getChildEntityAt(option == 1 ? 1 : 0)->getContentType(), "multipart/signed");
    EXPECT_NE(written(*message).find("\r\n\r\n" + body), std::string::npos);
    EXPECT_EQ(again->getChildEntityAt(1)->getFileName("us-ascii") != nullptr, option != 1);
  }
}

TEST(DisclaimerContract, RefusalsChangeNothing) {
  const std::string binary = "Content-Type: application/pdf\r\nContent-Transfer-Encoding: base64\r\n\r\nAAAA";
  const std::string encrypted = "Content-Type: multipart/encrypted; boundary=b\r\n\r\n--b\r\n\r\nx\r\n--b--\r\n";
  for (const std::string& bytes : {binary, encrypted}) {
    MessageFixture message(bytes);
    EXPECT_EQ(insert(*message, "D", 0), kVoDisclaimerRefused);
    EXPECT_EQ(written(*message), bytes);
    EXPECT_EQ(insert(*message, "D", 8), kVoSuccess);  // wrapped
    EXPECT_NE(written(*message).find(bytes), std::string::npos);
  }
  MessageFixture message("Subject: s\r\n\r\nx");
  Text text("D");
  EXPECT_EQ(message->insertDisclaimerMessage(kVoDisclaimerTop, nullptr, 0, "utf-8", nullptr), kVoBadArgument);
  EXPECT_EQ(message->insertDisclaimerMessage(kVoDisclaimerTop, text.get(), 0, nullptr, nullptr), kVoBadArgument);
  EXPECT_EQ(message->insertDisclaimerMessage(kVoDisclaimerTop, text.get(), 0, "utf-8", "no/charset"), kVoBadArgument);
  EXPECT_EQ(message->_defaultDisclaimerMessage(kVoDisclaimerTop, text.get(), "us-ascii", "x-unknown"), kVoSuccess);
  EXPECT_EQ(insert(*message, "\x80", 0, 2, "us-ascii"), kVoSuccess);  // as a body of its own, as it came
  EXPECT_EQ(contentOf(*message->getChildEntityAt(1)), "\x80");
}

}  // namespace
}  // namespace vomsg::test
