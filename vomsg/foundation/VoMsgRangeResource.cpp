#include "vomsg/foundation/VoMsgRangeResource.h"

#include <algorithm>
#include <memory>

#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

// A reader over a stretch of what another reader delivers.
class RangeReader : public VoMsgBufferedReader {
 public:
  RangeReader(std::unique_ptr<VoMsgBufferedReader> whole, std::uint32_t offset, std::uint32_t size)
      : VoMsgBufferedReader(0), mWhole(std::move(whole)), mStart(offset), mSize(size) {
    mIsOpen = rewind();
  }

  bool open() override {
    if (mIsOpen) return true;
    return mIsOpen = mWhole->open() && rewind();
  }
  void close() override {
    mWhole->close();
    mIsOpen = false;
    mBuffered = 0;
    mpCurrent = mpEnd = mpBuffer;
  }
  bool isOpen() override { return mIsOpen; }
  unsigned getOffset() override { return mBuffered - static_cast<unsigned>(mpEnd - mpCurrent); }
  bool seek(long delta) override {
    const long long target = static_cast<long long>(getOffset()) + delta;
    return moveWithin(target);
  }
  long rseek(long offset, int whence) override {
    if (whence == 1) return seek(offset) ? static_cast<long>(getOffset()) : -1;
    if (whence != 0 && whence != 2) return static_cast<long>(getOffset());
    if ((whence == 0) == (offset < 0) && offset != 0) return -1;
    return moveWithin(whence == 0 ? offset : static_cast<long long>(mSize) + offset) ? static_cast<long>(getOffset())
                                                                                     : -1;
  }
  bool ungetChar() override { return seek(-1); }
  unsigned getSize() override { return mSize; }
  int readBuffer() override {
    if (!mIsOpen) return 0;
    const unsigned count = mWhole->read(mpBuffer, std::min(mBufferSize, mSize - mBuffered));
    mBuffered += count;
    mpCurrent = mpBuffer;
    mpEnd = mpBuffer + count;
    return static_cast<int>(count);
  }

 private:
  bool rewind() {
    mBuffered = 0;
    mpCurrent = mpEnd = mpBuffer;
    return moveTo(*mWhole, mStart);
  }
  bool moveWithin(long long target) {
    if (target < 0 || target > static_cast<long long>(mSize)) return false;
    const long long first = static_cast<long long>(mBuffered) - (mpEnd - mpBuffer);
    if (target >= first && target <= static_cast<long long>(mBuffered)) {
      mpCurrent = mpBuffer + (target - first);
      return true;
    }
    if (!moveTo(*mWhole, mStart + static_cast<std::uint64_t>(target))) return false;
    mBuffered = static_cast<std::uint32_t>(target);
    mpCurrent = mpEnd = mpBuffer;
    return true;
  }

  std::unique_ptr<VoMsgBufferedReader> mWhole;
  std::uint32_t mStart;
  std::uint32_t mSize;
  std::uint32_t mBuffered = 0;  // the position of mpEnd within the range
  bool mIsOpen = false;
};

}  // namespace

RangeResource::RangeResource(const VoObjectStub<VoMsgResourceLocator>& whole, std::uint32_t offset, std::uint32_t size)
    : VoMsgResourceLocator(nullptr, nullptr), mWhole(whole), mOffset(offset), mSize(size) {
  // A range of a range is one of the whole, so that deep nesting adds no readers.
  if (const auto* const range = dynamic_cast<RangeResource*>(whole.getObject())) {
    mOffset += range->mOffset;
    mWhole = VoObjectStub<VoMsgResourceLocator>(range->mWhole);
  }
}

RangeResource::~RangeResource() = default;

int RangeResource::getResourceType() const { return kResourceType; }

VoMsgBufferedReader* RangeResource::getInputStream(VoMsgResourceDataType type) const {
  if (type != dataPart) return nullptr;
  if (const auto* const memory = dynamic_cast<VoMsgMemoryResource*>(mWhole.getObject())) {
    auto* const block = static_cast<unsigned char*>(memory->getMemoryPointer(dataPart));
    auto reader = std::make_unique<VoMsgMemoryReader>(block ? block + mOffset : nullptr, mSize);
    return reader->open() ? reader.release() : nullptr;
  }
  std::unique_ptr<VoMsgBufferedReader> whole(mWhole.getObject()->getInputStream(dataPart));
  if (!whole) return nullptr;
  auto reader = std::make_unique<RangeReader>(std::move(whole), mOffset, mSize);
  return reader->isOpen() ? reader.release() : nullptr;
}

VoMsgBufferedWriter* RangeResource::getOutputStream(VoMsgResourceDataType) const { return nullptr; }

bool RangeResource::equal(VoMsgResourceLocator* other) const {
  return this == other || mWhole.getObject()->equal(other);
}

unsigned RangeResource::getSize(VoMsgResourceDataType type) const { return type == dataPart ? mSize : 0; }
bool RangeResource::hasResourceFork() const { return false; }

}  // namespace vomsg::detail
