#include "vomsg/foundation/VoMsgMemoryResource.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "vomsg/foundation/VoMsgLargeBlock.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"
#include "vomsg/foundation/VoMsgMultiString.h"
#include "vomsg/foundation/VoMsgShortage.h"

namespace {

// A zeroed block with room for `length` bytes and `extra` ones; an empty record when memory runs out.
VoMsgMemBlock allocateBlock(unsigned length, unsigned extra) {
  VoMsgMemBlock block;
  const std::uint64_t bytes = std::uint64_t{length} + extra;
  if (bytes > std::numeric_limits<unsigned>::max()) return block;
  block.data = static_cast<char*>(std::calloc(static_cast<std::size_t>(bytes), 1));
  if (!block.data) return block;
  vomsg::detail::adviseLargeBlock(block.data, static_cast<std::size_t>(bytes));
  block.length = length;
  block.capacity = static_cast<unsigned>(bytes);
  block.owned = true;
  return block;
}

}  // namespace

VoMsgMemoryResource::VoMsgMemoryResource(void* data, unsigned length, signed char copy, const char* name,
                                         const char* charset)
    : VoMsgResourceLocator(name, charset) {
  if (!data) return;
  if (copy == 1) {
    mBlocks[dataPart] = allocateBlock(length, 17);
    if (mBlocks[dataPart].data) std::memcpy(mBlocks[dataPart].data, data, length);
  } else {
    mBlocks[dataPart].data = static_cast<char*>(data);
    mBlocks[dataPart].length = length;
  }
}

VoMsgMemoryResource::VoMsgMemoryResource(void* data, unsigned length, const char* name, const char* charset)
    : VoMsgMemoryResource(data, length, 0, name, charset) {}

VoMsgMemoryResource::VoMsgMemoryResource(unsigned size, const char* name, const char* charset)
    : VoMsgResourceLocator(name, charset) {
  mBlocks[dataPart] = allocateBlock(size, 16);
}

VoMsgMemoryResource::~VoMsgMemoryResource() {
  freeTmpResource();
  for (const VoMsgMemBlock& block : mBlocks)
    if (block.owned) std::free(block.data);
}

int VoMsgMemoryResource::getResourceType() const { return memory; }

VoMsgMemBlock* VoMsgMemoryResource::block(VoMsgResourceDataType type) const {
  return type == dataPart || type == resourceForkPart ? &mBlocks[type] : nullptr;
}

VoMsgBufferedReader* VoMsgMemoryResource::getInputStream(VoMsgResourceDataType type) const {
  const VoMsgMemBlock* const part = block(type);
  if (!part) return nullptr;
  auto* const data = reinterpret_cast<unsigned char*>(part->data);
  auto* const reader = new (std::nothrow) VoMsgMemoryReader(data, part->length);
  // A part without a block has nothing to open, yet it reads as what it is: empty.
  if (reader)
    reader->open();
  else
    vomsg::detail::noteShortage(kVoNoMemory);
  return reader;
}

VoMsgBufferedWriter* VoMsgMemoryResource::getOutputStream(VoMsgResourceDataType type) const {
  VoMsgMemBlock* const part = block(type);
  if (!part) return nullptr;
  auto* const writer = new (std::nothrow) VoMsgMemoryWriter(part);
  if (writer)
    writer->open();
  else
    vomsg::detail::noteShortage(kVoNoMemory);
  return writer;
}

bool VoMsgMemoryResource::equal(VoMsgResourceLocator* other) const {
  if (other == this) return true;
  const auto* const memoryResource = dynamic_cast<const VoMsgMemoryResource*>(other);
  return memoryResource && mBlocks[dataPart].data == memoryResource->mBlocks[dataPart].data &&
         mBlocks[dataPart].length == memoryResource->mBlocks[dataPart].length;
}

unsigned VoMsgMemoryResource::getSize(VoMsgResourceDataType type) const {
  const VoMsgMemBlock* const part = block(type);
  return part ? part->length : 0;
}

bool VoMsgMemoryResource::hasResourceFork() const { return mBlocks[resourceForkPart].length != 0; }

void* VoMsgMemoryResource::getMemoryPointer(VoMsgResourceDataType type) const {
  const VoMsgMemBlock* const part = block(type);
  return part ? part->data : nullptr;
}
