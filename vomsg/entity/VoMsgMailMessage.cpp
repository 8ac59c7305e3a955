#include "vomsg/entity/VoMsgMailMessage.h"

#include "vomsg/anomaly/VoMsgAnomalyList.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

int VoMsgMailMessage::mMaxExtractLevel = 20;

VoMsgMailMessage::VoMsgMailMessage() : VoMsgMailMessage(nullptr) {}

VoMsgMailMessage::VoMsgMailMessage(const VoUUID_t* uuid) {
  if (uuid)
    mUUID = *uuid;
  else
    vo_createUUID(&mUUID);
  mUUIDString[0] = '\0';
}

VoMsgMailMessage::~VoMsgMailMessage() {
  if (mCollectsAnomalies) vomsg::detail::keepAnomalies(this, nullptr);
}

// A nested message is tagged like the message it came in; the text is made when the first line is logged.
const char* VoMsgMailMessage::_getUUIDString() {
  if (getParentEntity()) return VoMsgEntity::_getUUIDString();
  if (!mUUIDString[0]) vo_stringFromUUID(&mUUID, mUUIDString);
  return mUUIDString;
}
