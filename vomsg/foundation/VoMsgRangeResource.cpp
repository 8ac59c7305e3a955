#include "vomsg/foundation/VoMsgRangeResource.h"

#include <memory>

#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgRangeReader.h"

namespace vomsg::detail {

RangeResource::RangeResource(const VoObjectStub<VoMsgResourceLocator>& whole, const ResourceState& state,
                             std::uint32_t offset, std::uint32_t size)
    : VoMsgResourceLocator(nullptr, nullptr), mWhole(whole), mState(state), mOffset(offset), mSize(size) {
  // A range of a range is one of the whole, so that deep nesting adds no readers.
  if (const auto* const range = dynamic_cast<RangeResource*>(whole.getObject())) {
    mOffset += range->mOffset;
    mWhole = VoObjectStub<VoMsgResourceLocator>(range->mWhole);
    mState = range->mState;
  }
}

RangeResource::~RangeResource() = default;

int RangeResource::getResourceType() const { return kResourceType; }

VoMsgBufferedReader* RangeResource::getInputStream(VoMsgResourceDataType type) const {
  if (type != dataPart) return nullptr;
  if (const auto* const memory = dynamic_cast<VoMsgMemoryResource*>(mWhole.getObject())) {
    if (mState.isKnown() && memory->getSize(dataPart) != mState.size) return nullptr;
    auto* const block = static_cast<unsigned char*>(memory->getMemoryPointer(dataPart));
    auto reader = std::make_unique<VoMsgMemoryReader>(block ? block + mOffset : nullptr, mSize);
    return reader->open() ? reader.release() : nullptr;
  }
  std::unique_ptr<VoMsgBufferedReader> whole(mWhole.getObject()->getInputStream(dataPart));
  if (!whole || (mState.isKnown() && ResourceState::of(*whole) != mState)) return nullptr;
  auto reader = std::make_unique<RangeReader>(std::move(whole), mOffset, mSize);
  return reader->isOpen() ? reader.release() : nullptr;
}

bool RangeResource::isUnchanged(VoMsgBufferedReader& reader) const {
  if (!mState.isKnown()) return true;
  if (const auto* const memory = dynamic_cast<VoMsgMemoryResource*>(mWhole.getObject()))
    return memory->getSize(dataPart) == mState.size;
  return ResourceState::of(reader) == mState;
}

VoMsgBufferedWriter* RangeResource::getOutputStream(VoMsgResourceDataType) const { return nullptr; }

bool RangeResource::equal(VoMsgResourceLocator* other) const {
  return this == other || mWhole.getObject()->equal(other);
}

unsigned RangeResource::getSize(VoMsgResourceDataType type) const { return type == dataPart ? mSize : 0; }
bool RangeResource::hasResourceFork() const { return false; }

}  // namespace vomsg::detail
