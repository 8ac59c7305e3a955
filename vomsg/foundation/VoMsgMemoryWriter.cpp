#include "vomsg/foundation/VoMsgMemoryWriter.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "vomsg/foundation/VoMsgLargeBlock.h"
#include "vomsg/foundation/VoMsgMemBlock.h"
#include "vomsg/foundation/VoMsgShortage.h"

namespace {

constexpr std::uint64_t kSlack = 17;  // the closing NUL and 16 spare bytes
constexpr std::uint64_t kMaxCapacity =
    std::min<std::uint64_t>(std::numeric_limits<unsigned>::max(), std::numeric_limits<std::size_t>::max() / 2);

}  // namespace

VoMsgMemoryWriter::VoMsgMemoryWriter() : VoMsgBufferedWriter(0) {}

VoMsgMemoryWriter::VoMsgMemoryWriter(VoMsgMemBlock* block)
    : VoMsgBufferedWriter(0), mOwnsData(block == nullptr), mpBlock(block) {}

VoMsgMemoryWriter::~VoMsgMemoryWriter() {
  VoMsgMemoryWriter::writeBuffer();
  if (mOwnsData) std::free(mpData);
}

bool VoMsgMemoryWriter::open() { return true; }
bool VoMsgMemoryWriter::close() { return true; }
bool VoMsgMemoryWriter::isOpen() { return true; }

bool VoMsgMemoryWriter::writeBuffer() {
  if (!append(mpBuffer, mUsed)) return false;
  mUsed = 0;
  return true;
}

bool VoMsgMemoryWriter::append(const char* data, std::uint64_t n) {
  if (n > kMaxCapacity || !reserve(mLength + n, false)) {
    vomsg::detail::noteShortage(kVoWriteFailed);
    return false;
  }
  if (n != 0) std::memcpy(mpData + mLength, data, static_cast<std::size_t>(n));
  mLength += static_cast<unsigned>(n);
  mpData[mLength] = '\0';
  if (mpBlock) mpBlock->length = mLength;
  return true;
}

// Makes room for `total` bytes and their NUL. Growth doubles the block, unless the caller knows what is to come.
bool VoMsgMemoryWriter::reserve(std::uint64_t total, bool exactly) {
  if (mpBlock) {
    // The record is asked every time: another writer on the same resource may have moved the block.
    mpData = mpBlock->owned ? mpBlock->data : nullptr;
    mCapacity = mpBlock->owned ? mpBlock->capacity : 0;
  }
  if (mpData && total < mCapacity) return true;
  if (total > kMaxCapacity - kSlack) return false;
  const std::uint64_t least = total + kSlack;
  std::uint64_t capacity = exactly ? least : std::clamp(2 * std::uint64_t{mCapacity}, least, kMaxCapacity);
  char* data = static_cast<char*>(std::realloc(mpData, static_cast<std::size_t>(capacity)));
  if (!data && capacity != least) {
    capacity = least;
    data = static_cast<char*>(std::realloc(mpData, static_cast<std::size_t>(capacity)));
  }
  if (!data) return false;
  vomsg::detail::adviseLargeBlock(data, static_cast<std::size_t>(capacity));
  mpData = data;
  mCapacity = static_cast<unsigned>(capacity);
  if (mpBlock) {
    if (!mpBlock->owned) mpBlock->length = 0;
    mpBlock->data = mpData;
    mpBlock->capacity = mCapacity;
    mpBlock->owned = true;
  }
  return true;
}

void VoMsgMemoryWriter::clearString() {
  if (!mOwnsData) return;
  std::free(mpData);
  mpData = nullptr;
  mLength = 0;
  mCapacity = 0;
}
