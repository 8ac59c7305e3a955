// The multi-byte encodings. They share what they look at: bytes above 0x7F and the first byte of every ASCII run
// between them, which may end a character.
#pragma once

#include "vomsg/charset/detect/VoMsgGroupDetector.h"

class VOMSG_API VoMsgMBCSGroupDetector : public VoMsgGroupDetector {
 public:
  // UTF-8, Big5, GB18030, EUC-KR, EUC-JP, x-euc-tw, Shift_JIS. Throws std::bad_alloc.
  VoMsgMBCSGroupDetector();
  // Chunks above 4096 bytes need memory for what they are reduced to; without it the session comes back as it was.
  VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) override;
};
