#include "vomsg/charset/detect/VoMsgCharSetDetectorFacade.h"

#include "vomsg/charset/detect/VoMsgMBCSGroupDetector.h"
#include "vomsg/charset/detect/VoMsgSBCSGroupDetector.h"
#include "vomsg/charset/detect/VoMsgSchemeDetector.h"

VoMsgCharSetDetectorFacade::VoMsgCharSetDetectorFacade() {
  addMember(new VoMsgSchemeDetector);
  addMember(new VoMsgMBCSGroupDetector);
  addMember(new VoMsgSBCSGroupDetector);
}

VoMsgDetectorSession* VoMsgCharSetDetectorFacade::handleData(const char* data, unsigned length,
                                                             VoMsgDetectorSession* session) {
  return VoMsgGroupDetector::handleData(data, length, session ? session : createSession());
}
