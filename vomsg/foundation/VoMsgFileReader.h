// Reads a regular file.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoMsgBufferedReader.h"

class VOMSG_API VoMsgFileReader : public VoMsgBufferedReader {
 public:
  // `fileName` is copied; the file is opened by open().
  VoMsgFileReader(const char* fileName, unsigned bufferSize);
  bool open() override;  // false for anything but a readable regular file
  void close() override;
  bool isOpen() override;
  unsigned getOffset() override;
  bool seek(long delta) override;
  long rseek(long offset, int whence) override;
  bool ungetChar() override;
  unsigned getSize() override;  // opens the file for the moment when it is closed
  ~VoMsgFileReader() override;
  int readBuffer() override;

  const char* getFileName() const { return mpFileName; }
  void unlink();  // closes and removes the file

 private:
  friend class vomsg::detail::ReaderWindow;
  std::uint64_t position() const;
  bool refillAt(std::int64_t target);

  int mFile = -1;
  char* mpFileName;
  std::uint64_t mFileOffset = 0;  // bytes taken from the file so far: the position of mpEnd
  std::uint64_t mFileSize = 0;    // when it was opened
};
