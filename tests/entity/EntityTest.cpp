#include <gtest/gtest.h>

#include <string>

#include "tests/support/MessageFixture.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgMimeEntity.h"

namespace {

using namespace vomsg::test;

TEST(Entity, ContentTypeIsAPrefixTest) {
  MessageFixture message("Content-Type: Text/PlainX\r\n\r\n");
  EXPECT_TRUE(message->isContentType("text", "plain"));
  EXPECT_TRUE(message->isContentType("text", nullptr));
  EXPECT_FALSE(message->isContentType("tex", nullptr));
  EXPECT_FALSE(message->isContentType("text", "plainxy"));
  EXPECT_FALSE(MessageFixture("\r\n")->isContentType("text", nullptr));
}

struct SmimeRow {
  const char* type;
  bool isSigned;
  bool isEncrypted;
};
constexpr SmimeRow kSmimeRows[] = {
    {"application/pkcs7-mime; smime-type=SIGNED-data", true, false},
    {"application/x-pkcs7-mime; smime-type=enveloped-data", false, true},
    {"application/pkcs7-mime; name=a.p7m", true, true},
    {"application/octet-stream; name=x.P7M", false, true},  // an octet stream is never taken for signed
    {"application/octet-stream; name=xp7m", false, false},
    {"multipart/signed; boundary=b", true, false},
    {"multipart/encrypted; boundary=b", false, false},  // its parts are what is encrypted
};

TEST(Entity, SmimeClassification) {
  for (const SmimeRow& row : kSmimeRows) {
    SCOPED_TRACE(row.type);
    MessageFixture message(std::string("Content-Type: ") + row.type + "\r\n\r\n--b\r\n\r\nx\r\n--b--\r\n");
    EXPECT_EQ(message->isSignedPart(), row.isSigned);
    EXPECT_EQ(message->isEncryptedPart(), row.isEncrypted);
    if (VoMsgEntity* const part = message->getChildEntity()) {
      EXPECT_EQ(part->isSignedPart(), message->isContentType("multipart", "signed"));
      EXPECT_EQ(part->isEncryptedPart(), message->isContentType("multipart", "encrypted"));
    }
  }
}

TEST(Entity, IteratorSkipsAndDescendsAsTheFilterSays) {
  MessageFixture message(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: multipart/mixed; boundary=c\r\n\r\n"
      "--c\r\n\r\nx\r\n--c--\r\n--b\r\nContent-Type: text/html\r\n\r\ny\r\n--b--\r\n");
  ASSERT_EQ(entitiesOf(*message).size(), 4u);
  EXPECT_EQ(entitiesOf(*message->getChildEntity()).size(), 2u);  // never beyond its root
  VoMsgEntityIterator leaves(&*message, [](VoMsgEntity* entity, signed char& descend) -> signed char {
    descend = entity->getParentEntity() == nullptr;
    return !entity->isMultipartEntity();
  });
  ASSERT_TRUE(leaves.first());
  EXPECT_STREQ(leaves.current()->getContentType(), "text/html");
  EXPECT_FALSE(leaves.next());
  EXPECT_EQ(message->getChildEntityByID(leaves.first()->getEntityID()), leaves.first());
}

TEST(Entity, ChildrenHaveIndexesAndBounds) {
  VoMsgRfc822Message message;
  for (int i = 0; i < 3; ++i) ASSERT_EQ(message.appendChildEntity(new VoMsgMimeEntity), kVoSuccess);
  EXPECT_EQ(message.countChildEntity(), 3u);
  EXPECT_EQ(message.getChildEntityAt(2)->getIndex(), 2u);
  EXPECT_EQ(message.getChildEntityAt(3), nullptr);
  VoMsgMimeEntity* const extra = new VoMsgMimeEntity;
  EXPECT_EQ(message.insertChildEntityAt(extra, 4), kVoOutOfRange);
  EXPECT_EQ(message.insertChildEntityAt(extra, 3), kVoSuccess);
  EXPECT_EQ(message.appendChildEntity(extra), kVoBadArgument);  // it has a parent
  EXPECT_EQ(message.removeChildEntityAt(4), kVoOutOfRange);
  EXPECT_EQ(message.removeChildEntityAt(0), kVoSuccess);
  EXPECT_EQ(extra->getIndex(), 2u);
  EXPECT_EQ(VoMsgMimeEntity().removeChildEntityAt(0), kVoNoChildren);
}

}  // namespace
