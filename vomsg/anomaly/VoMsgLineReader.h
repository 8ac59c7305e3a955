// Lines of a stretch of a source, in constant memory: of a longer line only its beginning is kept.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoMsgBufferedReader.h"

namespace vomsg::detail {

class LineReader {
 public:
  static constexpr std::size_t kKept = 1024;

  // `reader` is open and borrowed.
  LineReader(VoMsgBufferedReader& reader, std::uint64_t offset, std::uint64_t length)
      : mReader(reader), mOffset(offset), mEnd(offset + length) {
    if (reader.rseek(static_cast<long>(offset), 0) < 0) mEnd = mOffset;
  }

  // Steps to the next line; false behind the last.
  bool next() {
    mText.clear();
    mLength = 0;
    mAfterCr = mEndsInCr;
    mEndsInCr = false;
    if (!fill()) return false;
    mLineOffset = position();
    while (fill()) {
      const char* const begin = mBuffer + mAt;
      const char* const end = mBuffer + mUsed;
      const char* at = begin;
      while (at < end && *at != '\r' && *at != '\n') ++at;
      const auto count = static_cast<std::size_t>(at - begin);
      mText.append(begin, std::min(count, kKept - std::min(mText.size(), kKept)));
      mLength += count;
      mAt += count;
      if (at == end) continue;
      const bool isCr = *at == '\r';
      ++mAt;
      if (isCr && fill() && mBuffer[mAt] == '\n')
        ++mAt;
      else
        mEndsInCr = isCr;
      return true;
    }
    return true;
  }

  std::string_view text() const { return mText; }       // the first kKept bytes, without the line end
  std::uint64_t length() const { return mLength; }      // without the line end
  std::uint64_t offset() const { return mLineOffset; }  // of the line in the source
  bool followsLoneCr() const { return mAfterCr; }       // the line before ended in a CR without LF
  std::uint64_t behind() const { return position(); }   // where the next line begins

 private:
  std::uint64_t position() const { return mOffset - (mUsed - mAt); }
  bool fill() {
    if (mAt < mUsed) return true;
    const std::uint64_t left = mEnd - mOffset;
    mAt = 0;
    mUsed = left == 0 ? 0 : mReader.read(mBuffer, static_cast<unsigned>(std::min<std::uint64_t>(left, sizeof mBuffer)));
    mOffset += mUsed;
    if (mUsed == 0) mEnd = mOffset;
    return mUsed > 0;
  }

  VoMsgBufferedReader& mReader;
  std::uint64_t mOffset;  // behind what is in the buffer
  std::uint64_t mEnd;
  std::string mText;
  std::uint64_t mLength = 0;
  std::uint64_t mLineOffset = 0;
  bool mEndsInCr = false;
  bool mAfterCr = false;
  std::size_t mAt = 0;
  std::size_t mUsed = 0;
  char mBuffer[8192];
};

}  // namespace vomsg::detail
