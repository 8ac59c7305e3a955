// What recognises one charset, or the charsets of one family. A detector is built once and never changes; what it
// learns about a text is in the session that the caller hands in with each chunk of it.
#pragma once

#include "vomsg/charset/detect/VoMsgDetectorSession.h"
#include "vomsg/foundation/VoMsgExport.h"

class VOMSG_API VoMsgCharSetDetector {
 public:
  // From this confidence on a detector that weighs evidence claims the text.
  static constexpr float kSureThing = 0.95f;

  VoMsgCharSetDetector() = default;
  VoMsgCharSetDetector(const VoMsgCharSetDetector&) = delete;
  VoMsgCharSetDetector& operator=(const VoMsgCharSetDetector&) = delete;
  virtual ~VoMsgCharSetDetector();

  // Learns from the next chunk and returns the session to go on with: the one given, another one (the caller owns
  // both), or null when there is none. A session handed in was made by this detector's createSession.
  virtual VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) = 0;
  // The charset that the session has decided on, as a static string or one that the session owns; null when none.
  virtual const char* getCharSetName(VoMsgDetectorSession* session) = 0;
  // A new session, the caller's; null when memory runs out.
  virtual VoMsgDetectorSession* createSession() = 0;
  // From 0 to 1. Unless a detector says otherwise 1 when the session has found its charset, else 0.
  virtual float getConfidence(VoMsgDetectorSession* session);
};
