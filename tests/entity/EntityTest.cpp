#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/MessageFixture.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/header/VoMsgHeaderField.h"

namespace {

using namespace vomsg::test;
using vomsg::detail::TreeAccess;

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

// Counts what is asked of it.
class CountingPart : public VoMsgMimeEntity {
 public:
  static inline std::size_t asked = 0;
  const char* getContentType() const override {
    ++asked;
    return VoMsgMimeEntity::getContentType();
  }
  std::uint32_t getEntityTypeID() const override {
    ++asked;
    return VoMsgMimeEntity::getEntityTypeID();
  }
};

// In document order, and from the bottom up, where each question could climb to the root.
TEST(Entity, WhatLiesAroundIsAskedOncePerEntity) {
  constexpr std::size_t kDepth = 5000;
  for (const bool fromBelow : {false, true}) {
    CountingPart root;
    VoMsgEntity* last = &root;
    for (std::size_t i = 0; i < kDepth; ++i, last = last->getChildEntity()) TreeAccess::append(last, new CountingPart);
    std::vector<VoMsgEntity*> all = entitiesOf(root);
    ASSERT_EQ(all.size(), kDepth + 1);
    if (fromBelow) std::reverse(all.begin(), all.end());
    CountingPart::asked = 0;
    for (VoMsgEntity* part : all)
      EXPECT_FALSE(part->isSignedPart() || part->isEncryptedPart() || part->getNestingLevel() != 0 ||
                   part->_getRootEntity() != &root);
    EXPECT_LT(CountingPart::asked, 15 * kDepth);  // a climb for each would ask some 50 million times
  }
}

// Asked before a change, the tree must not answer from memory after it.
TEST(Entity, WhatLiesAroundFollowsEveryChange) {
  const std::string part = "Content-Type: multipart/mixed; boundary=c\r\n\r\n--c\r\n\r\nx\r\n--c--\r\n";
  MessageFixture message("Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n" + part + "--b--\r\n");
  VoMsgEntity* const inner = message->getChildEntity();
  VoMsgEntity* const leaf = inner->getChildEntity();
  const auto is = [&] {
    return (leaf->isSignedPart() ? "signed" : "") + std::string(leaf->isEncryptedPart() ? "encrypted" : "") +
           std::to_string(leaf->getNestingLevel());
  };
  EXPECT_EQ(is(), "0");
  inner->setHeaderValue("Content-Type", "multipart/signed", "us-ascii", nullptr);
  EXPECT_EQ(is(), "signed0");
  inner->getHeader("Content-Type")->setRawFieldValue("multipart/encrypted");
  EXPECT_EQ(is(), "encrypted0");
  message->getHeader("Content-Type")->setFieldValue("multipart/signed", "us-ascii", nullptr);
  EXPECT_EQ(is(), "signedencrypted0");
  inner->removeHeader("Content-Type");
  EXPECT_EQ(is(), "signed0");
  VoMsgEntity* const copy = message->split();
  VoMsgEntity* const wrapper = copy->createWrapperEntity();
  VoMsgEntity* const copied = entitiesOf(*copy).back();
  EXPECT_EQ(copied->getNestingLevel(), 1u);
  VoMsgRfc822Message around;
  EXPECT_STREQ(copied->_getUUIDString(), "");
  ASSERT_EQ(around.appendChildEntity(wrapper), kVoSuccess);
  EXPECT_STREQ(copied->_getUUIDString(), around._getUUIDString());
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
