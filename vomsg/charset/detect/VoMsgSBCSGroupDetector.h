// The single-byte charsets, each with a language. None ever drops out, so thirteen of them see every byte of a text
// that nobody else claims; the group counts for all of them at once.
#pragma once

#include <memory>

#include "vomsg/charset/detect/VoMsgGroupDetector.h"

class VOMSG_API VoMsgSBCSGroupDetector : public VoMsgGroupDetector {
 public:
  // A VoMsgSequenceDetector for each of the thirteen models, in their order. Throws std::bad_alloc.
  VoMsgSBCSGroupDetector();
  ~VoMsgSBCSGroupDetector() override;
  VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) override;
};
