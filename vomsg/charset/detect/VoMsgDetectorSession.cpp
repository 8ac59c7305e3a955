#include "vomsg/charset/detect/VoMsgDetectorSession.h"

#include "vomsg/charset/detect/VoMsgCharSetDetector.h"

VoMsgDetectorSession::VoMsgDetectorSession(VoMsgCharSetDetector* maker) : detector(maker) {}

VoMsgDetectorSession::~VoMsgDetectorSession() = default;

const char* VoMsgDetectorSession::getCharSet() { return detector->getCharSetName(this); }

float VoMsgDetectorSession::getConfidence() { return detector->getConfidence(this); }
