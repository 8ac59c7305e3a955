#include "vomsg/charset/detect/VoMsgCharSetDetectorFacade.h"

#include "vomsg/charset/detect/VoMsgMBCSGroupDetector.h"
#include "vomsg/charset/detect/VoMsgSBCSGroupDetector.h"
#include "vomsg/charset/detect/VoMsgSchemeDetector.h"

VoMsgCharSetDetectorFacade::VoMsgCharSetDetectorFacade() {
  addMember(std::make_unique<VoMsgSchemeDetector>());
  addMember(std::make_unique<VoMsgMBCSGroupDetector>());
  addMember(std::make_unique<VoMsgSBCSGroupDetector>());
}

VoMsgDetectorSession* VoMsgCharSetDetectorFacade::handleData(const char* data, unsigned length,
                                                             VoMsgDetectorSession* session) {
  return VoMsgGroupDetector::handleData(data, length, session ? session : createSession());
}
