// UTF-8: claims a text after its fifth well-formed multi-byte character.
#pragma once

#include "vomsg/charset/detect/VoMsgCharSetDetector.h"
#include "vomsg/charset/detect/VoMsgCodingStateMachine.h"

class VOMSG_API VoMsgUTF8DetectorSession : public VoMsgDetectorSession {
 public:
  explicit VoMsgUTF8DetectorSession(VoMsgCharSetDetector* detector);

 private:
  friend class VoMsgUTF8Detector;
  int multiByteCount = 0;  // stops counting where more changes nothing
  VoMsgCodingStateMachine machine;
};

class VOMSG_API VoMsgUTF8Detector : public VoMsgCharSetDetector {
 public:
  // Five characters are proof enough: what is malformed behind them in the same chunk does not take it back.
  VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) override;
  const char* getCharSetName(VoMsgDetectorSession* session) override;  // "utf-8"
  VoMsgDetectorSession* createSession() override;
  float getConfidence(VoMsgDetectorSession* session) override;
};
