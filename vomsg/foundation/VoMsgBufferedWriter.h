// A buffered byte stream to write to, with helpers that copy from a reader.
#pragma once

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
namespace vomsg::detail {
class WriterAccess;
}

class VOMSG_API VoMsgBufferedWriter {
 public:
  // A buffer of `bufferSize` bytes, 32768 when it is 0.
  explicit VoMsgBufferedWriter(unsigned bufferSize);
  VoMsgBufferedWriter(const VoMsgBufferedWriter&) = delete;
  VoMsgBufferedWriter& operator=(const VoMsgBufferedWriter&) = delete;

  virtual ~VoMsgBufferedWriter();
  virtual bool open() = 0;
  virtual bool close() = 0;
  virtual bool isOpen() = 0;
  // Hands the pending bytes to the target and empties the buffer. False when the target refuses them.
  virtual bool writeBuffer() = 0;

  // False when a full buffer cannot be handed on. Zero bytes always succeed.
  bool write(const char* data, unsigned n);
  bool flush();

  // Copies the rest of `source` and flushes. kVoBadArgument: null; kVoWriteFailed: a write or the flush failed.
  VoErrorCode copyFrom(VoMsgBufferedReader* source);
  // Copies exactly `n` bytes and flushes. kVoReadFailed: `source` ended early (what it had is written).
  VoErrorCode copyFrom(VoMsgBufferedReader* source, unsigned n);
  // Copies the rest line by line, each terminator as CR LF, or as "<br>" when `htmlBreak` is not null. A last
  // line without terminator stays without. No flush.
  VoErrorCode copyFromText(VoMsgBufferedReader* source, const char* htmlBreak);
  // Copies at most `n` bytes as lines whose terminators become CR LF. When the cut leaves only the CR of a
  // CR LF, that CR is the line's terminator. No flush.
  VoErrorCode copyFromText(VoMsgBufferedReader* source, unsigned n);

 protected:
  char* mpBuffer;
  unsigned mBufferSize;
  unsigned mUsed = 0;  // bytes pending

 private:
  friend class vomsg::detail::WriterAccess;
};
