// Streams that are hard on their users: readers that show a few bytes at once or end where their memory ends, and a
// writer that stops taking bytes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"

namespace vomsg::test {

// Reads `text` (borrowed) through a heap buffer of exactly `window` bytes; moves as a file reader does.
class WindowReader : public VoMsgBufferedReader {
 public:
  WindowReader(std::string_view text, std::size_t window)
      : VoMsgBufferedReader(static_cast<unsigned>(window)), mText(text) {
    open();
  }
  bool open() override { return rseek(0, 0) == 0; }
  void close() override { mpCurrent = mpEnd = mpBuffer; }
  bool isOpen() override { return true; }
  unsigned getOffset() override { return static_cast<unsigned>(mNext - static_cast<std::size_t>(mpEnd - mpCurrent)); }
  bool seek(long delta) override { return rseek(delta, 1) >= 0; }
  long rseek(long offset, int whence) override {
    const std::size_t base = whence == 0 ? 0 : whence == 1 ? getOffset() : mText.size();
    const std::int64_t target = static_cast<std::int64_t>(base) + offset;
    if (target < 0 || target > static_cast<std::int64_t>(mText.size())) return -1;
    mNext = static_cast<std::size_t>(target);
    mpCurrent = mpEnd = mpBuffer;
    return static_cast<long>(target);
  }
  bool ungetChar() override { return seek(-1); }
  unsigned getSize() override { return static_cast<unsigned>(mText.size()); }
  int readBuffer() override {
    const std::size_t n = std::min<std::size_t>(mBufferSize, mText.size() - mNext);
    if (n > 0) std::memcpy(mpBuffer, mText.data() + mNext, n);
    mNext += n;
    mpCurrent = mpBuffer;
    mpEnd = mpBuffer + n;
    return static_cast<int>(n);
  }

 private:
  std::string_view mText;
  std::size_t mNext = 0;  // where the next refill begins
};

// Reads a copy of `text` in a heap block of its exact size, so that the sanitizers see one byte too far.
class ExactMemoryReader : public VoMsgMemoryReader {
 public:
  explicit ExactMemoryReader(std::string_view text) : VoMsgMemoryReader(nullptr, 0), mBytes(new char[text.size()]) {
    text.copy(mBytes.get(), text.size());
    setString(reinterpret_cast<unsigned char*>(mBytes.get()), static_cast<unsigned>(text.size()));
    open();
  }
  const char* bytes() const { return mBytes.get(); }

 private:
  std::unique_ptr<char[]> mBytes;
};

// Takes `limit` bytes, then refuses.
class LimitedWriter : public VoMsgBufferedWriter {
 public:
  explicit LimitedWriter(std::size_t limit = SIZE_MAX, unsigned buffer = 16)
      : VoMsgBufferedWriter(buffer), mLimit(limit) {}
  bool open() override { return true; }
  bool close() override { return flush(); }
  bool isOpen() override { return true; }
  bool writeBuffer() override {
    if (text.size() + mUsed > mLimit) return false;
    text.append(mpBuffer, mUsed);
    mUsed = 0;
    return true;
  }

  std::string text;  // what was taken

 private:
  std::size_t mLimit;
};

// What `codec(writer, reader)` makes of `bytes` when it sees no more than `window` of them at once.
template <class Codec>
std::string through(std::string_view bytes, std::size_t window, Codec&& codec) {
  WindowReader reader(bytes, window);
  LimitedWriter writer;
  codec(writer, reader);
  return writer.text;
}

}  // namespace vomsg::test
