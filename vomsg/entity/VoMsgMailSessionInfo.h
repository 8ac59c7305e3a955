// What a host knows about the session that delivered a message, apart from the message's headers, which anybody may
// have written. A message keeps a pointer to it and never looks inside; the host owns it and lets it live as long.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

// As seen from the host's own domain.
enum VoMsgMailDirection_e : int { kVoMailUnknown = 0, kVoMailIncoming = 1, kVoMailOutgoing = 2 };

class VOMSG_API VoMsgMailSessionInfo {
 public:
  VoMsgMailSessionInfo() = default;
  virtual ~VoMsgMailSessionInfo();
  // kVoMailUnknown until it is set.
  VoMsgMailDirection_e getMailDirection() const { return mDirection; }
  void setMailDirection(VoMsgMailDirection_e direction) { mDirection = direction; }

 protected:
  VoMsgMailDirection_e mDirection = kVoMailUnknown;
};
