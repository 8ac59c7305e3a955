#include "vomsg/foundation/VoMsgFileReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgShortage.h"

static_assert(sizeof(off_t) == 8, "positions of files of 2 GiB and more must not wrap");

namespace {

constexpr char kLogSource[] = "VoMsgFileReader";

int openForReading(const char* name) {
  // Without O_NONBLOCK a pipe under that name would block here instead of being refused.
  int file;
  do {
    file = ::open(name, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  } while (file < 0 && errno == EINTR);
  return file;
}

// As many of `n` bytes at `offset` as the file has and the device gives.
std::size_t readAt(int file, char* dst, std::size_t n, std::uint64_t offset) {
  std::size_t count = 0;
  while (count < n) {
    const ssize_t got = ::pread(file, dst + count, n - count, static_cast<off_t>(offset + count));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) vomsg::detail::noteShortage(kVoReadFailed);
    if (got <= 0) break;
    count += static_cast<std::size_t>(got);
  }
  return count;
}

// Sizes and positions that 32 bits cannot say become all ones, "cannot be told"; they never wrap.
unsigned narrow(std::uint64_t value) {
  return static_cast<unsigned>(std::min<std::uint64_t>(value, std::numeric_limits<unsigned>::max()));
}

}  // namespace

VoMsgFileReader::VoMsgFileReader(const char* fileName, unsigned bufferSize)
    : VoMsgBufferedReader(bufferSize), mpFileName(vomsg::detail::copyCStringOrNull(fileName).release()) {}

VoMsgFileReader::~VoMsgFileReader() {
  VoMsgFileReader::close();
  std::free(mpFileName);
}

bool VoMsgFileReader::open() {
  if (!mpBuffer || !mpFileName) return false;
  if (mFile >= 0) return true;
  mFileOffset = mFileSize = 0;
  mpCurrent = mpEnd = mpBuffer;
  mFile = openForReading(mpFileName);
  if (mFile < 0) {
    vomsg::detail::noteShortage(kVoReadFailed);
    VO_LOG(1, "", "Can not open file [%s].", mpFileName);
    return false;
  }
  struct stat status;
  if (::fstat(mFile, &status) != 0 || !S_ISREG(status.st_mode)) {
    close();
    return false;
  }
  mFileSize = static_cast<std::uint64_t>(status.st_size);
  return true;
}

void VoMsgFileReader::close() {
  if (mFile >= 0) ::close(mFile);
  mFile = -1;
  mFileOffset = mFileSize = 0;
  mpCurrent = mpEnd = mpBuffer;
}

bool VoMsgFileReader::isOpen() { return mFile >= 0; }

std::uint64_t VoMsgFileReader::position() const { return mFileOffset - static_cast<std::uint64_t>(mpEnd - mpCurrent); }

unsigned VoMsgFileReader::getOffset() { return narrow(position()); }

int VoMsgFileReader::readBuffer() {
  if (!mpBuffer) return -1;
  if (mFile < 0) return 0;
  const unsigned room = std::min<unsigned>(mBufferSize, std::numeric_limits<int>::max());
  const std::size_t count = readAt(mFile, mpBuffer, room, mFileOffset);
  mFileOffset += count;
  mpCurrent = mpBuffer;
  mpEnd = mpBuffer + count;
  return static_cast<int>(count);
}

// Refills the buffer at `target`; false, with nothing changed, when that lies outside the file.
bool VoMsgFileReader::refillAt(std::int64_t target) {
  if (mFile < 0 || target < 0 || static_cast<std::uint64_t>(target) > mFileSize) return false;
  mFileOffset = static_cast<std::uint64_t>(target);
  readBuffer();
  return true;
}

bool VoMsgFileReader::seek(long delta) {
  if (delta == 0) return true;
  if (delta < 0 ? delta >= mpBuffer - mpCurrent : delta < mpEnd - mpCurrent) {
    mpCurrent += delta;
    return true;
  }
  std::int64_t target;
  return !__builtin_add_overflow(static_cast<std::int64_t>(position()), std::int64_t{delta}, &target) &&
         refillAt(target);
}

long VoMsgFileReader::rseek(long offset, int whence) {
  if (whence < 0 || whence > 2) return static_cast<long>(position());
  const std::uint64_t base = whence == 0 ? 0 : whence == 1 ? position() : mFileSize;
  std::int64_t target;
  if (__builtin_add_overflow(static_cast<std::int64_t>(base), std::int64_t{offset}, &target)) return -1;
  // A position that the result type cannot say is refused rather than reported as a failure that happened to move.
  if (target > std::numeric_limits<long>::max() || (whence == 2 && offset > 0)) return -1;
  const bool moved = whence == 1 ? seek(offset) : refillAt(target);
  return moved ? static_cast<long>(target) : -1;
}

bool VoMsgFileReader::ungetChar() { return seek(-1); }

unsigned VoMsgFileReader::getSize() {
  const bool wasOpen = isOpen();
  if (!wasOpen && !open()) return std::numeric_limits<unsigned>::max();
  struct stat status;
  const bool known = ::fstat(mFile, &status) == 0;
  if (!wasOpen) close();
  return known ? narrow(static_cast<std::uint64_t>(status.st_size)) : std::numeric_limits<unsigned>::max();
}

void VoMsgFileReader::unlink() {
  close();
  if (mpFileName) ::unlink(mpFileName);
}
