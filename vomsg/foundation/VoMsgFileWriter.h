// Writes a file.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vomsg/foundation/VoMsgBufferedWriter.h"

class VOMSG_API VoMsgFileWriter : public VoMsgBufferedWriter {
 public:
  VoMsgFileWriter(const char* fileName, unsigned bufferSize);
  ~VoMsgFileWriter() override;  // flushes and closes
  bool open() override;
  bool close() override;  // flushes; false, with the file still open, when that fails
  bool isOpen() override;
  bool writeBuffer() override;  // true without doing anything while the file is not open

  void unlink();  // closes and removes the file; pending bytes are dropped
  // How open() treats the name.
  enum class Creation {
    shared,     // created with mode 0644, or truncated
    exclusive,  // created with mode 0600; fails when anything stands there
    existing    // truncated; fails when nothing stands there, or a symbolic link
  };
  void setCreation(Creation creation) { mCreation = creation; }
  void setExclusive() { mCreation = Creation::exclusive; }

 private:
  friend class vomsg::detail::WriterAccess;
  std::size_t put(const char* data, std::size_t n);
  void closeFile();

  int mFile = -1;
  char* mpFileName;
  std::uint64_t mCount = 0;  // bytes written since the file was opened
  Creation mCreation = Creation::shared;
};
