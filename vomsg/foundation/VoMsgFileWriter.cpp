#include "vomsg/foundation/VoMsgFileWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgShortage.h"

namespace {

constexpr char kLogSource[] = "VoMsgFileWriter";

}  // namespace

VoMsgFileWriter::VoMsgFileWriter(const char* fileName, unsigned bufferSize)
    : VoMsgBufferedWriter(bufferSize), mpFileName(vomsg::detail::copyCStringOrNull(fileName).release()) {}

VoMsgFileWriter::~VoMsgFileWriter() {
  VoMsgFileWriter::close();
  closeFile();  // when the last flush failed
  std::free(mpFileName);
}

bool VoMsgFileWriter::open() {
  if (mFile >= 0) return true;
  if (!mpFileName) return false;
  int flags = O_WRONLY | O_CLOEXEC | O_NOCTTY;
  mode_t mode = 0644;
  switch (mCreation) {
    case Creation::shared:
      flags |= O_CREAT | O_TRUNC;
      break;
    case Creation::exclusive:
      flags |= O_CREAT | O_EXCL | O_NOFOLLOW;
      mode = 0600;
      break;
    case Creation::existing:
      flags |= O_TRUNC | O_NOFOLLOW;
      break;
  }
  do {
    mFile = ::open(mpFileName, flags, mode);
  } while (mFile < 0 && errno == EINTR);
  if (mFile >= 0) return true;
  vomsg::detail::noteShortage(kVoWriteFailed);
  VO_LOG(1, "", "Can not open file [%s].(system error code = %d)", mpFileName, errno);
  return false;
}

bool VoMsgFileWriter::close() {
  if (!writeBuffer()) return false;
  closeFile();
  return true;
}

void VoMsgFileWriter::closeFile() {
  if (mFile >= 0) ::close(mFile);
  mFile = -1;
  mCount = 0;
}

bool VoMsgFileWriter::isOpen() { return mFile >= 0; }

bool VoMsgFileWriter::writeBuffer() {
  if (!mpBuffer) return false;
  if (mFile < 0) return true;
  const std::size_t written = put(mpBuffer, mUsed);
  // What the file took must not be written a second time by the next flush.
  if (written != 0 && written != mUsed) std::memmove(mpBuffer, mpBuffer + written, mUsed - written);
  mUsed -= static_cast<unsigned>(written);
  return mUsed == 0;
}

std::size_t VoMsgFileWriter::put(const char* data, std::size_t n) {
  std::size_t done = 0;
  while (done < n) {
    const ssize_t count = ::write(mFile, data + done, n - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) VO_LOG(1, "", "Fail to write data to file. System error code is %d", errno);
    if (count <= 0) {
      vomsg::detail::noteShortage(kVoWriteFailed);
      break;
    }
    done += static_cast<std::size_t>(count);
  }
  mCount += done;
  return done;
}

void VoMsgFileWriter::unlink() {
  mUsed = 0;
  closeFile();
  if (mpFileName) ::unlink(mpFileName);
}
