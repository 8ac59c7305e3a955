// A reader over a stretch of what another reader delivers.
#pragma once

#include <cstdint>
#include <memory>

#include "vomsg/foundation/VoMsgBufferedReader.h"

namespace vomsg::detail {

class RangeReader : public VoMsgBufferedReader {
 public:
  // [offset, offset + size) of `whole`, an open reader; closed when that cannot move there.
  RangeReader(std::unique_ptr<VoMsgBufferedReader> whole, std::uint32_t offset, std::uint32_t size);
  ~RangeReader() override;
  bool open() override;
  void close() override;
  bool isOpen() override;
  unsigned getOffset() override;
  bool seek(long delta) override;
  long rseek(long offset, int whence) override;  // to the end, too, like a file
  bool ungetChar() override;
  unsigned getSize() override;
  int readBuffer() override;

  VoMsgBufferedReader& whole() const { return *mWhole; }

 private:
  bool rewind();
  bool moveTo(std::int64_t target);

  std::unique_ptr<VoMsgBufferedReader> mWhole;
  std::uint32_t mStart;
  std::uint32_t mSize;
  std::uint32_t mBuffered = 0;  // the position of mpEnd within the range
  bool mIsOpen = false;
};

}  // namespace vomsg::detail
