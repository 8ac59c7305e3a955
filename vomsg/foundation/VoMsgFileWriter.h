// Writes a file: created with mode 0644 or truncated.
#pragma once

#include "vomsg/foundation/VoMsgBufferedWriter.h"

class VOMSG_API VoMsgFileWriter : public VoMsgBufferedWriter {
 public:
  VoMsgFileWriter(const char* fileName, unsigned bufferSize);
  ~VoMsgFileWriter() override;  // flushes and closes
  bool open() override;
  bool close() override;  // flushes; false, with the file still open, when that fails
  bool isOpen() override;
  bool writeBuffer() override;  // true without doing anything while the file is not open

  void unlink();  // closes and removes the file
  // The next open() creates the file exclusively with mode 0600 and fails when it exists.
  void setExclusive() { mExclusive = true; }

 private:
  int mFile = -1;
  char* mpFileName;
  unsigned mCount = 0;
  bool mExclusive = false;
};
