#include "vomsg/foundation/VoMsgBufferedReader.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

#include "vomsg/foundation/VoMsgLineWalk.h"
#include "vomsg/foundation/VoMsgShortage.h"

using vomsg::detail::ReaderWindow;

namespace {

constexpr unsigned kDefaultBufferSize = 32768;
constexpr unsigned kFirstLine = 256;
constexpr unsigned kLineStep = 256;

// The block that a line grows in. What the caller is told about its size follows the small steps that the interface
// states; the block itself doubles, or a line of many buffers would be copied once for each of them.
class LineBlock {
 public:
  LineBlock(char* block, unsigned capacity) : mpBlock(block), mStated(block ? capacity : kFirstLine), mRoom(mStated) {
    if (!mpBlock) mpBlock = static_cast<char*>(std::calloc(kFirstLine + 16, 1));
  }

  bool valid() const { return mpBlock != nullptr; }

  bool append(std::string_view stretch, bool last) {
    if (!reserve(mLength + stretch.size() + 1)) return false;
    if (!stretch.empty()) std::memcpy(mpBlock + mLength, stretch.data(), stretch.size());
    mLength += stretch.size();
    if (!last && mLength >= mStated)
      mStated = mLength - mStated > kLineStep ? mLength + kLineStep : mStated + kLineStep;
    return true;
  }

  // Ends the line and hands the block over; null, with everything freed, for an empty line or without memory.
  char* finish(unsigned& capacity, bool complete) {
    mStated = std::max(mStated, mLength + 1);
    if (!complete || mLength == 0 || mStated > std::numeric_limits<unsigned>::max() || !reserve(mStated)) {
      std::free(mpBlock);
      capacity = 0;
      return nullptr;
    }
    mpBlock[mLength] = '\0';
    capacity = static_cast<unsigned>(mStated);
    return mpBlock;
  }

 private:
  bool reserve(std::uint64_t size) {
    if (size <= mRoom) return true;
    const std::uint64_t room = std::max(size, 2 * mRoom);
    const std::uint64_t bytes = room + 128;
    if (bytes > std::numeric_limits<std::size_t>::max()) return false;
    char* const block = static_cast<char*>(std::realloc(mpBlock, static_cast<std::size_t>(bytes)));
    if (!block) return false;
    mpBlock = block;
    mRoom = room;
    return true;
  }

  char* mpBlock;
  std::uint64_t mStated;
  std::uint64_t mRoom;
  std::uint64_t mLength = 0;
};

}  // namespace

VoMsgBufferedReader::VoMsgBufferedReader(unsigned bufferSize)
    : mBufferSize(bufferSize ? bufferSize : kDefaultBufferSize), mOwnsBuffer(true) {
  const std::uint64_t bytes = std::uint64_t{mBufferSize} + 16;
  mpBuffer = bytes <= std::numeric_limits<std::size_t>::max()
                 ? static_cast<char*>(std::malloc(static_cast<std::size_t>(bytes)))
                 : nullptr;
  if (!mpBuffer) vomsg::detail::noteShortage(kVoNoMemory);
  mpCurrent = mpEnd = mpBuffer;
}

VoMsgBufferedReader::VoMsgBufferedReader(char* block, unsigned length)
    : mpBuffer(block),
      mpCurrent(block),
      mpEnd(block ? block + length : nullptr),
      mBufferSize(block ? length : 0),
      mOwnsBuffer(false) {}

VoMsgBufferedReader::~VoMsgBufferedReader() {
  if (mOwnsBuffer) std::free(mpBuffer);
}

unsigned VoMsgBufferedReader::read(char* dst, unsigned n) {
  if (!mpBuffer || !dst) return 0;
  unsigned copied = 0;
  while (copied < n && ReaderWindow::fill(*this)) {
    const std::string_view window = ReaderWindow::buffered(*this).substr(0, n - copied);
    std::memcpy(dst + copied, window.data(), window.size());
    ReaderWindow::consume(*this, window.size());
    copied += static_cast<unsigned>(window.size());
  }
  return copied;
}

char* VoMsgBufferedReader::readline() {
  unsigned capacity = 0;
  return readline(nullptr, capacity);
}

char* VoMsgBufferedReader::readline(char* buffer, unsigned& capacity) {
  unsigned terminatorLength = 0;
  return readline(buffer, capacity, terminatorLength);
}

char* VoMsgBufferedReader::readline(char* buffer, unsigned& capacity, unsigned& terminatorLength) {
  terminatorLength = 0;
  if (!mpBuffer) {
    std::free(buffer);
    capacity = 0;
    return nullptr;
  }
  LineBlock block(buffer, capacity);
  if (!block.valid()) {
    capacity = 0;
    return nullptr;
  }
  const vomsg::detail::WalkedLine line = vomsg::detail::walkLine(
      *this, vomsg::detail::kNoLimit, [&](std::string_view stretch, bool last) { return block.append(stretch, last); });
  terminatorLength = line.terminatorLength;
  return block.finish(capacity, line.accepted);
}
