#include "vomsg/charset/detect/VoMsgUTF8Detector.h"

#include <new>

namespace {
constexpr int kEnough = 6;  // characters from which on the confidence is at its greatest
}  // namespace

VoMsgUTF8DetectorSession::VoMsgUTF8DetectorSession(VoMsgCharSetDetector* detector)
    : VoMsgDetectorSession(detector), machine(&UTF8SMModel) {}

VoMsgDetectorSession* VoMsgUTF8Detector::handleData(const char* data, unsigned length, VoMsgDetectorSession* session) {
  if (!session) return nullptr;
  auto* const utf8 = static_cast<VoMsgUTF8DetectorSession*>(session);
  for (const char* at = data; at != data + length; ++at) {
    const std::uint32_t state = utf8->machine.nextState(static_cast<unsigned char>(*at));
    if (state == VoMsgCodingStateMachine::kFailed || state == VoMsgCodingStateMachine::kItsMe) {
      session->setState(state == VoMsgCodingStateMachine::kFailed ? VoMsgDetectorSession::kNotMe
                                                                  : VoMsgDetectorSession::kFound);
      break;
    }
    if (state == VoMsgCodingStateMachine::kStart && utf8->machine.currentCharLen > 1 && utf8->multiByteCount < kEnough)
      ++utf8->multiByteCount;
  }
  if (getConfidence(session) >= kSureThing) session->setState(VoMsgDetectorSession::kFound);
  return session;
}

const char* VoMsgUTF8Detector::getCharSetName(VoMsgDetectorSession*) { return "utf-8"; }

VoMsgDetectorSession* VoMsgUTF8Detector::createSession() { return new (std::nothrow) VoMsgUTF8DetectorSession(this); }

// Each character halves the doubt: 0.938125 after four, 0.9690625 after five.
float VoMsgUTF8Detector::getConfidence(VoMsgDetectorSession* session) {
  if (!session) return 0.0f;
  const int count = static_cast<VoMsgUTF8DetectorSession*>(session)->multiByteCount;
  if (count >= kEnough) return 0.99f;
  float doubt = 0.99f;
  for (int i = 0; i < count; ++i) doubt *= 0.5f;
  return 1.0f - doubt;
}
