// A bounded view of a TNEF stream: every move and read ends at its end, whatever the lengths in the stream claim.
#pragma once

#include <cstdint>

class VoMsgBufferedReader;

namespace vomsg::detail {

// Walks [start, end) of a reader. Moves only change a number; the reader follows when bytes are asked for, so
// skipping from record to record costs nothing, and the end of the data is a position like any other.
class TnefCursor {
 public:
  // From the reader's position to its end. A source whose size cannot be told, or that has 2^31 bytes or more, is
  // not readable and seems to be empty.
  explicit TnefCursor(VoMsgBufferedReader& reader);

  bool isReadable() const { return mIsReadable; }
  // Narrows or widens the view; the position moves to `start`. Values beyond the source are cut to it.
  void setRange(std::uint32_t start, std::uint32_t end);

  std::uint32_t start() const { return mStart; }
  std::uint32_t end() const { return mEnd; }
  std::uint32_t size() const { return mEnd - mStart; }
  std::uint32_t position() const { return mPosition; }
  std::uint32_t left() const { return mEnd - mPosition; }

  // False, with nothing moved, when the target lies outside of the range; its end is inside.
  bool moveTo(std::uint64_t offset);
  bool skip(std::uint64_t count) { return moveTo(std::uint64_t{mPosition} + count); }

  // Little-endian integers; bytes missing at the end count as 0.
  std::uint8_t readInt8() { return static_cast<std::uint8_t>(readInteger(1)); }
  std::uint16_t readInt16() { return static_cast<std::uint16_t>(readInteger(2)); }
  std::uint32_t readInt32() { return readInteger(4); }
  // Copies up to `count` bytes and clears the rest of `target`. Returns how many were there.
  std::uint32_t read(char* target, std::uint32_t count);
  // How many bytes the reads found missing, in all.
  std::uint32_t missing() const { return mMissing; }

  // Takes the reader to where the cursor stands.
  void settle();

  // Whether the streams in object values of this range have been read as messages.
  void setReadsStreams(bool reads) { mReadsStreams = reads; }
  bool readsStreams() const { return mReadsStreams; }

 private:
  std::uint32_t readInteger(unsigned size);

  VoMsgBufferedReader& mReader;
  std::uint32_t mStart;
  std::uint32_t mEnd;
  std::uint32_t mSourceSize;
  std::uint32_t mPosition;
  std::uint32_t mMissing = 0;
  bool mIsReadable;
  bool mIsAway = false;  // the reader stands elsewhere
  bool mReadsStreams = false;
};

}  // namespace vomsg::detail
