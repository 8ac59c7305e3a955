// The root of the detectors: escape-based encodings, then multi-byte ones, then single-byte ones.
#pragma once

#include "vomsg/charset/detect/VoMsgGroupDetector.h"

class VOMSG_API VoMsgCharSetDetectorFacade : public VoMsgGroupDetector {
 public:
  VoMsgCharSetDetectorFacade();  // throws std::bad_alloc
  // Makes a session when there is none; null when memory runs out.
  VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) override;
};
