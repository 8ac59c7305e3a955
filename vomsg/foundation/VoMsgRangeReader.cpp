#include "vomsg/foundation/VoMsgRangeReader.h"

#include <algorithm>

#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

RangeReader::RangeReader(std::unique_ptr<VoMsgBufferedReader> whole, std::uint32_t offset, std::uint32_t size)
    : VoMsgBufferedReader(0), mWhole(std::move(whole)), mStart(offset), mSize(size) {
  mIsOpen = rewind();
}

RangeReader::~RangeReader() = default;

bool RangeReader::open() {
  if (!mIsOpen) mIsOpen = mWhole->open() && rewind();
  return mIsOpen;
}

void RangeReader::close() {
  mWhole->close();
  mIsOpen = false;
  mBuffered = 0;
  mpCurrent = mpEnd = mpBuffer;
}

bool RangeReader::isOpen() { return mIsOpen; }

unsigned RangeReader::getOffset() { return mBuffered - static_cast<unsigned>(mpEnd - mpCurrent); }

bool RangeReader::seek(long delta) {
  std::int64_t target = 0;
  return !__builtin_add_overflow(std::int64_t{getOffset()}, std::int64_t{delta}, &target) && moveTo(target);
}

long RangeReader::rseek(long offset, int whence) {
  if (whence < 0 || whence > 2) return static_cast<long>(getOffset());
  if ((whence == 0 && offset < 0) || (whence == 2 && offset > 0)) return -1;
  const std::int64_t base = whence == 0 ? 0 : whence == 1 ? std::int64_t{getOffset()} : std::int64_t{mSize};
  std::int64_t target = 0;
  if (__builtin_add_overflow(base, std::int64_t{offset}, &target)) return -1;
  return moveTo(target) ? static_cast<long>(getOffset()) : -1;
}

bool RangeReader::ungetChar() { return seek(-1); }

unsigned RangeReader::getSize() { return mSize; }

int RangeReader::readBuffer() {
  if (!mIsOpen) return 0;
  const unsigned count = mWhole->read(mpBuffer, std::min(mBufferSize, mSize - mBuffered));
  mBuffered += count;
  mpCurrent = mpBuffer;
  mpEnd = mpBuffer + count;
  return static_cast<int>(count);
}

bool RangeReader::rewind() {
  mBuffered = 0;
  mpCurrent = mpEnd = mpBuffer;
  return detail::moveTo(*mWhole, mStart);
}

bool RangeReader::moveTo(std::int64_t target) {
  if (target < 0 || target > std::int64_t{mSize}) return false;
  const std::int64_t first = std::int64_t{mBuffered} - (mpEnd - mpBuffer);
  if (target >= first && target <= std::int64_t{mBuffered}) {
    mpCurrent = mpBuffer + (target - first);
    return true;
  }
  if (!detail::moveTo(*mWhole, mStart + static_cast<std::uint64_t>(target))) return false;
  mBuffered = static_cast<std::uint32_t>(target);
  mpCurrent = mpEnd = mpBuffer;
  return true;
}

}  // namespace vomsg::detail
