// A buffered byte stream to read from: lines with their terminators (LF, CR LF or a lone CR), relative and
// absolute moves, one-byte push-back. Positions and sizes are unsigned 32-bit byte counts.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

namespace vomsg::detail {
class ReaderWindow;
}

class VOMSG_API VoMsgBufferedReader {
 public:
  // A buffer of `bufferSize` bytes, 32768 when it is 0.
  explicit VoMsgBufferedReader(unsigned bufferSize);
  VoMsgBufferedReader(const VoMsgBufferedReader&) = delete;
  VoMsgBufferedReader& operator=(const VoMsgBufferedReader&) = delete;

  // Opens at the start of the data. True when open afterwards.
  virtual bool open() = 0;
  virtual void close() = 0;
  virtual bool isOpen() = 0;
  // The position of the next byte, from the start of the data.
  virtual unsigned getOffset() = 0;
  // Moves by `delta` bytes. False, with nothing moved, when the target lies outside the data.
  virtual bool seek(long delta) = 0;
  // Moves to `offset` from the start (whence 0), from here (1) or from the end (2; offset <= 0). Returns the
  // new position, or -1 with nothing moved. A memory reader refuses to move to exactly its end except by
  // whence 2; a file reader allows it.
  virtual long rseek(long offset, int whence) = 0;
  // Moves back by one byte.
  virtual bool ungetChar() = 0;
  // The total length of the data; all ones when it cannot be told.
  virtual unsigned getSize() = 0;
  virtual ~VoMsgBufferedReader();
  // Refills the used-up buffer: the bytes now in it, 0 at the end of the data, -1 without a buffer.
  virtual int readBuffer() = 0;

  // Copies up to `n` bytes to `dst`; fewer only at the end of the data.
  unsigned read(char* dst, unsigned n);

  // The next line with its terminator, NUL-terminated, in a block that the caller frees; null at the end.
  char* readline();
  // The same into `buffer` (grown with realloc; null: a new one), whose capacity is `capacity`. At the end of
  // the data the buffer is freed, `capacity` is 0 and the result is null.
  char* readline(char* buffer, unsigned& capacity);
  // Reports the terminator's length too: 2 for CR LF, 1 for a lone LF or CR, 0 when the data ended without one.
  char* readline(char* buffer, unsigned& capacity, unsigned& terminatorLength);

 protected:
  // A reader over somebody else's block, which it neither allocates nor frees.
  VoMsgBufferedReader(char* block, unsigned length);

  char* mpBuffer;        // start of the buffer
  char* mpCurrent;       // next byte to deliver
  char* mpEnd;           // one past the last valid byte
  unsigned mBufferSize;  // capacity

 private:
  friend class vomsg::detail::ReaderWindow;
  bool mOwnsBuffer;
};
