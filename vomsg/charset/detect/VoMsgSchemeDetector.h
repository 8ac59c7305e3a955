// Encodings that announce themselves: byte-order marks, and the escape sequences of HZ, ISO-2022-CN, ISO-2022-JP and
// ISO-2022-KR.
#pragma once

#include "vomsg/charset/detect/VoMsgCharSetDetector.h"
#include "vomsg/charset/detect/VoMsgCodingStateMachine.h"

class VOMSG_API VoMsgSchemeDetectorSession : public VoMsgDetectorSession {
 public:
  explicit VoMsgSchemeDetectorSession(VoMsgCharSetDetector* detector);
  ~VoMsgSchemeDetectorSession() override;

  const char* getFoundCharSet() const { return charset; }

 private:
  friend class VoMsgSchemeDetector;
  static constexpr int kMachines = 4;

  void found(const char* name);  // the state stays as it is when memory runs out
  void scanForEscapes(const char* data, unsigned length);
  void runMachines(const unsigned char* data, unsigned length);

  int activeCount = kMachines;
  char* charset = nullptr;  // owned, from strdup
  char lastByte = 0;        // the last one seen that is ASCII or 0xA0
  bool escState = false;    // an escape was seen
  // The first `activeCount` are in play; a retired one changes places with the last of them.
  VoMsgCodingStateMachine machines[kMachines];
};

class VOMSG_API VoMsgSchemeDetector : public VoMsgCharSetDetector {
 public:
  // A byte-order mark counts at the start of every chunk. A text is searched for nothing else until its first escape;
  // chunks before that one are never looked at again.
  VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) override;
  const char* getCharSetName(VoMsgDetectorSession* session) override;
  VoMsgDetectorSession* createSession() override;
};
