// Reads a caller's memory block in place; the block must outlive the reader.
#pragma once

#include "vomsg/foundation/VoMsgBufferedReader.h"

class VOMSG_API VoMsgMemoryReader : public VoMsgBufferedReader {
 public:
  VoMsgMemoryReader(unsigned char* data, unsigned length);
  bool open() override;  // false without data
  void close() override;
  bool isOpen() override;
  unsigned getOffset() override;
  bool seek(long delta) override;
  long rseek(long offset, int whence) override;
  bool ungetChar() override;  // always true
  unsigned getSize() override;
  ~VoMsgMemoryReader() override;
  int readBuffer() override;

  // Rebinds the reader to another block and moves to its start.
  void setString(unsigned char* data, unsigned length);

 private:
  unsigned char mIsOpen = 0;
};
