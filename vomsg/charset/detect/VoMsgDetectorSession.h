// What one analysis knows in one detector. Detectors never change and serve everybody; all that changes is in sessions.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

class VoMsgCharSetDetector;

class VOMSG_API VoMsgDetectorSession {
 public:
  enum State : int {
    kDetecting = 0,
    kFound = 1,
    kNotMe = 2,  // the data cannot be in this session's charset
    kError = 3,  // ends the analysis; no detector of the library sets it
  };

  // `detector` made the session and outlives it.
  explicit VoMsgDetectorSession(VoMsgCharSetDetector* detector);
  VoMsgDetectorSession(const VoMsgDetectorSession&) = delete;
  VoMsgDetectorSession& operator=(const VoMsgDetectorSession&) = delete;
  virtual ~VoMsgDetectorSession();

  int getState() const { return state; }  // a State
  void setState(int newState) { state = newState; }
  VoMsgCharSetDetector* getDetector() const { return detector; }
  const char* getCharSet();  // the detector's getCharSetName for this session
  float getConfidence();     // the detector's getConfidence for this session

 private:
  int state = kDetecting;
  VoMsgCharSetDetector* detector;
};
