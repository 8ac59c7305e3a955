// What a host knows about the SMTP session that delivered a message: the connecting host and the envelope (RFC 5321).
// Nothing here touches the message's headers. Every successful change marks the record as modified.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vomsg/entity/VoMsgMailSessionInfo.h"
#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/header/VoMsgUserAddress.h"

class VOMSG_API VoMsgSmtpSessionInfo : public VoMsgMailSessionInfo {
 public:
  VoMsgSmtpSessionInfo();
  ~VoMsgSmtpSessionInfo() override;
  VoMsgSmtpSessionInfo(const VoMsgSmtpSessionInfo&) = delete;
  VoMsgSmtpSessionInfo& operator=(const VoMsgSmtpSessionInfo&) = delete;

  // A record of its own with the same host, sender and recipients: unmodified, direction unknown. Yours; null when
  // memory runs out.
  VoMsgSmtpSessionInfo* copy() const;
  bool isSessionModified() const { return mIsModified; }

  const char* getConnectionHost() const { return mConnectionHost.c_str(); }  // borrowed; "" at first
  VoErrorCode setConnectionHost(const char* host);                           // copied; null stores ""

  // Addresses handed in as objects are taken over unless the call fails; those handed out are borrowed.
  VoMsgUserAddress* getSender() const { return mSender.get(); }  // null at first
  VoErrorCode setSender(VoMsgUserAddress* address);              // null leaves no sender
  VoErrorCode setSender(const char* text);

  unsigned countRecipient() const;
  VoMsgUserAddress* getRecipientAt(unsigned i) const;  // null past the end
  // kVoBadArgument: null; kVoOutOfRange: no i-th recipient. Inserting at the end is refused on purpose, so an empty
  // list takes no insert: that is what appending is for.
  VoErrorCode setRecipientAt(unsigned i, VoMsgUserAddress* address);
  VoErrorCode setRecipientAt(unsigned i, const char* text);
  VoErrorCode appendRecipient(const char* text);
  VoErrorCode appendRecipient(VoMsgUserAddress* address);
  VoErrorCode insertRecipientAt(unsigned i, const char* text);
  VoErrorCode insertRecipientAt(unsigned i, VoMsgUserAddress* address);
  VoErrorCode removeRecipientAt(unsigned i);
  VoErrorCode removeRecipientAll();

 private:
  std::string mConnectionHost;
  std::unique_ptr<VoMsgUserAddress> mSender;
  std::vector<std::unique_ptr<VoMsgUserAddress>> mRecipients;  // in envelope order
  bool mIsModified = false;
};
