#include "vomsg/entity/VoMsgSmtpSessionInfo.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/RememberingLog.h"

namespace vomsg::test {
namespace {

std::string recipientsOf(const VoMsgSmtpSessionInfo& session) {
  std::string all;
  for (unsigned i = 0; i < session.countRecipient(); ++i)
    all += std::string(session.getRecipientAt(i)->getRawAddress()) + ";";
  return all;
}

TEST(SmtpSessionInfo, RecipientsKeepTheirOrderAndTheirLimits) {
  const RememberingLog log;
  VoMsgSmtpSessionInfo session;
  EXPECT_EQ(session.insertRecipientAt(0, "a@x"), kVoOutOfRange);
  EXPECT_EQ(session.appendRecipient(static_cast<const char*>(nullptr)), kVoBadArgument);
  EXPECT_EQ(session.setRecipientAt(0, "a@x"), kVoOutOfRange);
  EXPECT_EQ(session.removeRecipientAt(0), kVoOutOfRange);
  EXPECT_FALSE(session.isSessionModified());  // nothing succeeded so far
  EXPECT_EQ(session.appendRecipient("b@x"), kVoSuccess);
  EXPECT_TRUE(session.isSessionModified());
  EXPECT_EQ(session.appendRecipient(new VoMsgUserAddress("d@x")), kVoSuccess);
  EXPECT_EQ(session.insertRecipientAt(0, "a@x"), kVoSuccess);
  EXPECT_EQ(session.insertRecipientAt(2, new VoMsgUserAddress("c@x")), kVoSuccess);
  EXPECT_EQ(session.insertRecipientAt(4, "e@x"), kVoOutOfRange);
  EXPECT_EQ(recipientsOf(session), "a@x;b@x;c@x;d@x;");
  EXPECT_EQ(session.setRecipientAt(3, "D@x"), kVoSuccess);
  EXPECT_EQ(session.setRecipientAt(0, static_cast<VoMsgUserAddress*>(nullptr)), kVoBadArgument);
  EXPECT_EQ(session.removeRecipientAt(1), kVoSuccess);
  EXPECT_EQ(recipientsOf(session), "a@x;c@x;D@x;");
  EXPECT_EQ(session.getRecipientAt(3), nullptr);
  EXPECT_EQ(session.removeRecipientAll(), kVoSuccess);
  EXPECT_EQ(session.countRecipient(), 0u);
  EXPECT_EQ(log.debug.size(), 6u);  // one line each for what was refused
}

TEST(SmtpSessionInfo, ACopyIsUnmodifiedAndItsOwn) {
  VoMsgSmtpSessionInfo session;
  session.setMailDirection(kVoMailOutgoing);
  EXPECT_EQ(session.setConnectionHost(nullptr), kVoSuccess);
  EXPECT_TRUE(session.isSessionModified());
  EXPECT_STREQ(session.getConnectionHost(), "");
  session.setConnectionHost("mx.example.org");
  session.setSender("s@x");
  session.appendRecipient("a@x");
  const std::unique_ptr<VoMsgSmtpSessionInfo> copy(session.copy());
  session.setSender("other@x");
  session.removeRecipientAll();
  EXPECT_FALSE(copy->isSessionModified());
  EXPECT_EQ(copy->getMailDirection(), kVoMailUnknown);
  EXPECT_STREQ(copy->getConnectionHost(), "mx.example.org");
  EXPECT_STREQ(copy->getSender()->getRawAddress(), "s@x");
  EXPECT_EQ(recipientsOf(*copy), "a@x;");
}

}  // namespace
}  // namespace vomsg::test
