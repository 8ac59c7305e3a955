#include "vomsg/embedded/VoMsgLineEndFilter.h"

#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

LineEndFilter::LineEndFilter(VoMsgBufferedWriter& target, std::string_view lineEnd, bool lastLineEnd)
    : VoMsgBufferedWriter(0), mTarget(target), mLineEnd(lineEnd), mLastLineEnd(lastLineEnd) {}

// Encoders write no CR but in their line ends, so a CR can be dropped without a look at what follows.
bool LineEndFilter::writeBuffer() {
  std::string_view rest(mpBuffer, mUsed);
  mUsed = 0;
  while (!rest.empty()) {
    if (rest.front() == '\r') {
      rest.remove_prefix(1);
      continue;
    }
    if (mHeld && !WriterAccess::writeThrough(mTarget, mLineEnd.data(), mLineEnd.size())) return false;
    mHeld = rest.front() == '\n';
    if (mHeld) {
      rest.remove_prefix(1);
      continue;
    }
    const std::string_view piece = rest.substr(0, rest.find_first_of("\r\n"));
    if (!WriterAccess::writeThrough(mTarget, piece.data(), piece.size())) return false;
    rest.remove_prefix(piece.size());
  }
  return true;
}

bool LineEndFilter::finish() {
  if (!flush()) return false;
  return !mHeld || !mLastLineEnd || WriterAccess::writeThrough(mTarget, mLineEnd.data(), mLineEnd.size());
}

}  // namespace vomsg::detail
