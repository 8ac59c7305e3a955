// Data in memory: the caller's block in place, a copy of it, or a block of the resource's own.
#pragma once

#include "vomsg/foundation/VoMsgMemBlock.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

class VOMSG_API VoMsgMemoryResource : public VoMsgResourceLocator {
 public:
  // `copy` 1: an own copy of the bytes; otherwise the caller's memory in place, which must outlive the
  // resource and is never written to. No `data` means no bytes, whatever `length` says.
  VoMsgMemoryResource(void* data, unsigned length, signed char copy, const char* name, const char* charset);
  VoMsgMemoryResource(void* data, unsigned length, const char* name, const char* charset);
  // An own block of `size` bytes, zeroed; empty when memory runs out.
  VoMsgMemoryResource(unsigned size, const char* name, const char* charset);
  ~VoMsgMemoryResource() override;
  int getResourceType() const override;
  VoMsgBufferedReader* getInputStream(VoMsgResourceDataType type) const override;  // also for an empty block
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType type) const override;
  bool equal(VoMsgResourceLocator* other) const override;
  unsigned getSize(VoMsgResourceDataType type) const override;
  bool hasResourceFork() const override;

  void* getMemoryPointer(VoMsgResourceDataType type) const;  // borrowed; null for other types

 private:
  friend class VoMsgResourceManager;
  VoMsgMemBlock* block(VoMsgResourceDataType type) const;

  mutable VoMsgMemBlock mBlocks[2];
  unsigned mAllocated = 0;  // counted against the manager's budget
};
