#include "vomsg/foundation/VoMsgMemoryReader.h"

#include <cstdint>
#include <limits>

VoMsgMemoryReader::VoMsgMemoryReader(unsigned char* data, unsigned length)
    : VoMsgBufferedReader(reinterpret_cast<char*>(data), length) {}

VoMsgMemoryReader::~VoMsgMemoryReader() = default;

bool VoMsgMemoryReader::open() {
  if (!mpBuffer) return false;
  mpCurrent = mpBuffer;
  mIsOpen = 1;
  return true;
}

void VoMsgMemoryReader::close() {
  mpCurrent = mpBuffer;
  mIsOpen = 0;
}

bool VoMsgMemoryReader::isOpen() { return mIsOpen != 0; }

unsigned VoMsgMemoryReader::getOffset() { return static_cast<unsigned>(mpCurrent - mpBuffer); }

bool VoMsgMemoryReader::seek(long delta) { return rseek(delta, 1) >= 0; }

long VoMsgMemoryReader::rseek(long offset, int whence) {
  const std::int64_t size = mpEnd - mpBuffer;
  std::int64_t target = mpCurrent - mpBuffer;
  if (whence == 0 || whence == 1) {
    // Exactly the end is refused here; callers rely on a successful move meaning that a byte follows.
    if (whence == 0) target = 0;
    if (__builtin_add_overflow(target, std::int64_t{offset}, &target) || target < 0 || target >= size) return -1;
  } else if (whence == 2) {
    if (offset > 0 || __builtin_add_overflow(size, std::int64_t{offset}, &target) || target < 0) return -1;
  }
  if (target > std::numeric_limits<long>::max()) return -1;
  if (mpBuffer) mpCurrent = mpBuffer + target;
  return static_cast<long>(target);
}

bool VoMsgMemoryReader::ungetChar() {
  rseek(-1, 1);
  return true;
}

unsigned VoMsgMemoryReader::getSize() { return mBufferSize; }

int VoMsgMemoryReader::readBuffer() {
  mpCurrent = mpEnd;
  return 0;
}

void VoMsgMemoryReader::setString(unsigned char* data, unsigned length) {
  mpBuffer = mpCurrent = reinterpret_cast<char*>(data);
  mBufferSize = data ? length : 0;
  mpEnd = data ? mpBuffer + length : nullptr;
}
