// Collects everything written in one heap block, which is always followed by a NUL.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoMsgBufferedWriter.h"

struct VoMsgMemBlock;

class VOMSG_API VoMsgMemoryWriter : public VoMsgBufferedWriter {
 public:
  VoMsgMemoryWriter();  // owns its block
  // Replaces what `block` (borrowed, must outlive the writer) records. The first flush allocates a new block
  // when the recorded one is not its resource's own, and the record owns it from then on; what a resource does
  // not own is never written to. The record follows every flush, and the destructor makes the last one.
  explicit VoMsgMemoryWriter(VoMsgMemBlock* block);
  ~VoMsgMemoryWriter() override;  // flushes
  bool open() override;
  bool close() override;
  bool isOpen() override;
  bool writeBuffer() override;  // false when memory runs out

  const char* getData() const { return mpData; }  // borrowed; null before anything was flushed
  unsigned getLength() const { return mLength; }  // bytes flushed so far
  void clearString();                             // frees the block when the writer owns it

 private:
  friend class vomsg::detail::WriterAccess;
  bool append(const char* data, std::uint64_t n);
  bool reserve(std::uint64_t total, bool exactly);

  char* mpData = nullptr;
  unsigned mLength = 0;
  bool mOwnsData = true;
  VoMsgMemBlock* mpBlock = nullptr;
  unsigned mCapacity = 0;  // bytes of the heap block behind mpData
};
