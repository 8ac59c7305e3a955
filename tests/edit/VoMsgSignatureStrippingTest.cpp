#include <gtest/gtest.h>

#include "tests/edit/EditFixture.h"

namespace vomsg::test {
namespace {

std::string part(std::string_view type, std::string_view body) {
  return "--b\r\nContent-Type: " + std::string(type) + "\r\n\r\n" + std::string(body) + "\r\n";
}

TEST(EditingQuestions, AttachmentsAndAlternatives) {
  struct Question {
    const char* fields;
    bool isAttachment;
    bool isAlternative;
  };
  constexpr Question kQuestions[] = {
      {"Subject: s\r\n", false, false},
      {"Content-Disposition: ATTACHMENT; filename=x\r\n", true, false},
      {"Content-Disposition: inline\r\n", false, false},
      {"Content-Disposition: attachments\r\n", false, false},
      {"Content-Type: Multipart/ALTERNATIVE; boundary=b\r\n", false, true},
      {"Content-Type: multipart/related; boundary=b\r\n", false, false},
      {"Content-Type: multipart/related; type=\"multipart/alternative\"; boundary=b\r\n", false, false},
      {"Content-Type: multipart/alternatives; boundary=b\r\n", false, false}};
  for (const Question& row : kQuestions) {
    SCOPED_TRACE(row.fields);
    MessageFixture message(std::string(row.fields) + "\r\n" + part("text/plain", "x") + "--b--\r\n");
    EXPECT_EQ(VoMsgRfc822Message::_isAttachment(&*message), row.isAttachment);
    EXPECT_EQ(VoMsgRfc822Message::_isAlternative(&*message), row.isAlternative);
    EXPECT_EQ(VoMsgRfc822Message::_isParentAlternative(message->getChildEntity()), row.isAlternative);
    EXPECT_EQ(message->_hasAlternative(), row.isAlternative);
  }
  EXPECT_FALSE(VoMsgRfc822Message::_isAttachment(nullptr) || VoMsgRfc822Message::_isAlternative(nullptr) ||
               VoMsgRfc822Message::_isParentAlternative(nullptr));
}

TEST(EditingQuestions, AnAlternativeInAnAttachedMessageDoesNotCount) {
  const std::string nested = "Content-Type: multipart/alternative; boundary=n\r\n\r\n--n\r\n\r\nx\r\n--n--";
  const std::string outer = "Content-Type: multipart/mixed; boundary=b\r\n\r\n" + part("message/rfc822", nested);
  EXPECT_FALSE(MessageFixture(outer + "--b--\r\n")->_hasAlternative());
  for (const char* type : {"application/octet-stream; name=m.eml", "multipart/alternative; boundary=n"})
    EXPECT_TRUE(MessageFixture(outer + part(type, nested) + "--b--\r\n")->_hasAlternative()) << type;
}

// What a signature covers is the same at its new place.
TEST(Stripping, AMovedPartIsNotEdited) {
  MessageFixture message("Subject: s\r\nContent-Type: multipart/signed; boundary=b\r\n\r\n" + part("text/plain", "x") +
                         part("application/pgp-signature", "sig") + "--b--\r\n");
  ASSERT_EQ(insert(*message, "D", 1, kVoDisclaimerTop, "utf-8", nullptr), kVoSuccess);
  ASSERT_EQ(message->stripSignaturePart(), kVoSuccess);
  EXPECT_EQ(occurrences(written(*message), "multipart/signed"), 1u);
  EXPECT_EQ(occurrences(written(*message), "sig\r\n"), 1u) << written(*message);
}

}  // namespace
}  // namespace vomsg::test
