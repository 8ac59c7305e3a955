#include <gtest/gtest.h>

#include "tests/edit/EditFixture.h"

namespace vomsg::test {
namespace {

std::string part(std::string_view type, std::string_view body) {
  return "--b\r\nContent-Type: " + std::string(type) + "\r\n\r\n" + std::string(body) + "\r\n";
}

std::string signedMessage(std::string_view signatures) {
  return "Subject: s\r\nMIME-Version: 1.0\r\nContent-Type: multipart/signed; "
         "protocol=\"application/pkcs7-signature\";\r\n"
         " micalg=sha-256; boundary=b\r\n\r\npreamble\r\n" +
         part("text/plain", "content") + std::string(signatures) + "--b--\r\nepilogue\r\n";
}

TEST(SignatureStripping, AnUneditedMessageKeepsItsSignature) {
  const std::string bytes = signedMessage(part("application/pkcs7-signature", "sig"));
  MessageFixture message(bytes);
  EXPECT_EQ(message->stripSignaturePart(), kVoSuccess);
  EXPECT_EQ(written(*message), bytes);
}

// What the parser wants written anew is no edit.
TEST(SignatureStripping, AMarkIsNoEdit) {
  std::string bytes = signedMessage(part("application/pkcs7-signature", "sig"));
  bytes.insert(0, "Dropped line\r\n");
  MessageFixture message(bytes);
  EXPECT_EQ(message->stripSignaturePart(), kVoSuccess);
  EXPECT_EQ(message->countChildEntity(), 2u);
}

TEST(SignatureStripping, AnEditedOneLosesSignaturesProtocolAndMicalg) {
  for (const char* type :
       {"application/pkcs7-signature; name=smime.p7s", "application/x-pkcs7-signature", "application/pgp-signature"}) {
    SCOPED_TRACE(type);
    MessageFixture message(signedMessage(part(type, "one") + part("image/png", "kept") + part(type, "two")));
    std::string text = "edited";
    ASSERT_EQ(message->getChildEntity()->setContent(resourceOver(text).get(), nullptr, nullptr), kVoSuccess);
    ASSERT_EQ(message->stripSignaturePart(), kVoSuccess);
    MessageFixture again(written(*message));
    EXPECT_STREQ(again->getContentType(), "multipart/mixed");
    EXPECT_EQ(again->getHeader("Content-Type")->countParameter(), 1u);
    EXPECT_STREQ(again->getBoundary(), "b");
    ASSERT_EQ(again->countChildEntity(), 2u);
    EXPECT_EQ(contentOf(*again->getChildEntityAt(0)), "edited");
    EXPECT_EQ(contentOf(*again->getChildEntityAt(1)), "kept");
    EXPECT_NE(written(*message).find("\r\n\r\npreamble\r\n"), std::string::npos);
  }
}

TEST(SignatureStripping, EditsOfTheHeaderAloneCountAndNestedOnesAreHandledEach) {
  const std::string inner =
      "--b\r\nContent-Type: multipart/signed; boundary=i; micalg=x\r\n\r\n--i\r\n\r\ninner\r\n--i\r\n"
      "Content-Type: application/pgp-signature\r\n\r\nsig\r\n--i--\r\n";
  MessageFixture message(signedMessage(inner + part("application/pkcs7-signature", "sig")));
  ASSERT_EQ(message->setHeaderValue("Subject", "other", "us-ascii", nullptr), kVoSuccess);
  ASSERT_EQ(message->stripSignaturePart(), kVoSuccess);
  MessageFixture again(written(*message));
  ASSERT_EQ(again->countChildEntity(), 2u);
  EXPECT_STREQ(again->getContentType(), "multipart/mixed");
  EXPECT_STREQ(again->getChildEntityAt(1)->getContentType(), "multipart/signed");  // nobody touched that one
  EXPECT_EQ(again->getChildEntityAt(1)->countChildEntity(), 2u);
}

TEST(EditingQuestions, Attachments) {
  struct Row {
    const char* field;
    bool want;
  };
  constexpr Row kRows[] = {{"", false},
                           {"Content-Disposition: attachment\r\n", true},
                           {"Content-Disposition: ATTACHMENT; filename=x\r\n", true},
                           {"Content-Disposition: inline\r\n", false},
                           {"Content-Disposition: attachments\r\n", false}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.field);
    MessageFixture message(std::string(row.field) + "Subject: s\r\n\r\nx");
    EXPECT_EQ(VoMsgRfc822Message::_isAttachment(&*message), row.want);
  }
  EXPECT_FALSE(VoMsgRfc822Message::_isAttachment(nullptr));
}

TEST(EditingQuestions, Alternatives) {
  struct Row {
    const char* type;
    bool isAlternative;
  };
  constexpr Row kRows[] = {{"multipart/alternative; boundary=b", true},
                           {"Multipart/ALTERNATIVE; boundary=b", true},
                           {"multipart/related; boundary=b", false},
                           {"multipart/related; type=\"multipart/alternative\"; boundary=b", false},
                           {"multipart/mixed; boundary=b", false}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.type);
    MessageFixture message("Content-Type: " + std::string(row.type) + "\r\n\r\n" + part("text/plain", "x") +
                           "--b--\r\n");
    EXPECT_EQ(VoMsgRfc822Message::_isAlternative(&*message), row.isAlternative);
    EXPECT_EQ(VoMsgRfc822Message::_isParentAlternative(message->getChildEntity()), row.isAlternative);
    EXPECT_EQ(message->_hasAlternative(), row.isAlternative);
  }
  EXPECT_FALSE(VoMsgRfc822Message::_isAlternative(nullptr));
  EXPECT_FALSE(VoMsgRfc822Message::_isParentAlternative(nullptr));
}

TEST(EditingQuestions, AnAlternativeInAnAttachedMessageDoesNotCount) {
  const std::string nested = "Content-Type: multipart/alternative; boundary=n\r\n\r\n--n\r\n\r\nx\r\n--n--";
  const std::string outer = "Content-Type: multipart/mixed; boundary=b\r\n\r\n";
  EXPECT_FALSE(MessageFixture(outer + part("message/rfc822", nested) + "--b--\r\n")->_hasAlternative());
  EXPECT_TRUE(
      MessageFixture(outer + part("application/octet-stream; name=m.eml", nested) + "--b--\r\n")->_hasAlternative());
  EXPECT_TRUE(MessageFixture(outer + part("message/rfc822", nested) +
                             part("multipart/alternative; boundary=n", "--n\r\n\r\nx\r\n--n--") + "--b--\r\n")
                  ->_hasAlternative());
}

}  // namespace
}  // namespace vomsg::test
