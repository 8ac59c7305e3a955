#include "vomsg/charset/detect/VoMsgCharSetDetector.h"

VoMsgCharSetDetector::~VoMsgCharSetDetector() = default;

float VoMsgCharSetDetector::getConfidence(VoMsgDetectorSession* session) {
  return session && session->getState() == VoMsgDetectorSession::kFound ? 1.0f : 0.0f;
}
