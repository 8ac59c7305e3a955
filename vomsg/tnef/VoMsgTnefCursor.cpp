#include "vomsg/tnef/VoMsgTnefCursor.h"

#include <algorithm>
#include <cstring>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/tnef/VoTnefInteger.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

namespace vomsg::detail {

TnefCursor::TnefCursor(VoMsgBufferedReader& reader) : mReader(reader) {
  const std::uint32_t size = reader.getSize();
  mIsReadable = size <= kMostTnefBytes;
  mSourceSize = mEnd = mIsReadable ? size : 0;
  mStart = 0;
  mPosition = std::min(reader.getOffset(), mEnd);
}

void TnefCursor::setRange(std::uint32_t start, std::uint32_t end) {
  mEnd = std::min(end, mSourceSize);
  mStart = std::min(start, mEnd);
  mPosition = mStart;
  mIsAway = true;
}

bool TnefCursor::moveTo(std::uint64_t offset) {
  if (offset < mStart || offset > mEnd) return false;
  if (offset != mPosition) mIsAway = true;
  mPosition = static_cast<std::uint32_t>(offset);
  return true;
}

std::uint32_t TnefCursor::read(char* target, std::uint32_t count) {
  const std::uint32_t there = std::min(count, left());
  std::uint32_t done = 0;
  if (there > 0) {
    settle();
    done = mIsAway ? 0 : mReader.read(target, there);
    mPosition += done;
    // A file that was cut after it was opened ends here; nobody may wait for the bytes that are gone.
    if (done < there) mEnd = mSourceSize = mPosition;
  }
  if (done < count) std::memset(target + done, 0, count - done);
  mMissing += count - done;
  return done;
}

void TnefCursor::settle() {
  if (mIsAway && vomsg::detail::moveTo(mReader, mPosition)) mIsAway = false;
}

std::uint32_t TnefCursor::readInteger(unsigned size) {
  char bytes[4];
  read(bytes, size);
  return littleEndian(reinterpret_cast<const unsigned char*>(bytes), size);
}

}  // namespace vomsg::detail
