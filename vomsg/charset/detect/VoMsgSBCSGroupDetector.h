// The single-byte charsets, each with a language.
#pragma once

#include "vomsg/charset/detect/VoMsgGroupDetector.h"

class VOMSG_API VoMsgSBCSGroupDetector : public VoMsgGroupDetector {
 public:
  // A VoMsgSequenceDetector for each of the thirteen models, in their order. Throws std::bad_alloc.
  VoMsgSBCSGroupDetector();
  VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) override;
};
