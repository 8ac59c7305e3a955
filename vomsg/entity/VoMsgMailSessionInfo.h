// What a host knows about the session that delivered a message. Separate from the message's headers.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

enum VoMsgMailDirection_e : int { kVoMailUnknown = 0, kVoMailIncoming = 1, kVoMailOutgoing = 2 };

class VOMSG_API VoMsgMailSessionInfo {
 public:
  VoMsgMailSessionInfo() = default;
  virtual ~VoMsgMailSessionInfo();
  VoMsgMailDirection_e getMailDirection() const { return mDirection; }
  void setMailDirection(VoMsgMailDirection_e direction) { mDirection = direction; }

 protected:
  VoMsgMailDirection_e mDirection = kVoMailUnknown;
};
