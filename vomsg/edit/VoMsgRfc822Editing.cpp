// Message editing: what every editing operation asks of an entity.
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgAscii.h"

bool VoMsgRfc822Message::_isAttachment(VoMsgEntity* entity) {
  const char* const disposition = entity ? entity->getHeaderValue("Content-Disposition", "us-ascii") : nullptr;
  return disposition && vomsg::detail::equalNoCase(disposition, "attachment");
}

// Not done yet: both refuse and change nothing.
VoErrorCode VoMsgRfc822Message::insertDisclaimerMessage(VoMsgDisclaimerPosition_e, VoMsgResourceLocator*, int,
                                                        const char*, const char*) {
  return kVoNotSupported;
}
VoErrorCode VoMsgRfc822Message::stripSignaturePart() { return kVoNotSupported; }
