// What the codecs share.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

// A source shorter than promised reads as filler, as it always did; but for no more than it gave and this much.
inline constexpr std::uint64_t kMostFiller = 4096;

// What `source` still holds; 0 when it cannot tell.
inline std::uint64_t bytesLeft(VoMsgBufferedReader& source) {
  const std::uint64_t size = source.getSize(), here = source.getOffset();
  return size != 0xFFFFFFFFu && size > here ? size - here : 0;
}

// Single bytes of a reader, which nobody else may use while this lives. It is left behind the last byte taken.
class ByteSource {
 public:
  explicit ByteSource(VoMsgBufferedReader& reader, std::uint64_t limit = UINT64_MAX) : mReader(reader), mLimit(limit) {}
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;
  ~ByteSource() { ReaderWindow::consume(mReader, mAt); }

  // -1 at the end of the data, or of `limit`.
  int next() {
    if (mAt == mWindow.size() && !refill()) return -1;
    return static_cast<unsigned char>(mWindow[mAt++]);
  }

 private:
  bool refill() {
    ReaderWindow::consume(mReader, std::exchange(mAt, 0));
    mWindow = {};
    if (mLimit == 0 || !ReaderWindow::fill(mReader)) return false;
    mWindow = ReaderWindow::buffered(mReader);
    if (mWindow.size() > mLimit) mWindow = mWindow.substr(0, static_cast<std::size_t>(mLimit));
    mLimit -= mWindow.size();
    return true;
  }

  VoMsgBufferedReader& mReader;
  std::uint64_t mLimit;  // what may be taken beyond the window
  std::string_view mWindow;
  std::size_t mAt = 0;
};

// Hands the rest of `source` to `each(bytes, n)` in stretches of `N` bytes, the last one perhaps shorter. False as
// soon as `each` says so.
template <std::size_t N, class Each>
bool forEachStretch(VoMsgBufferedReader& source, Each each) {
  unsigned char open[N];  // a stretch of which the buffer held only the beginning
  std::size_t held = 0;
  while (ReaderWindow::fill(source)) {
    const std::string_view window = ReaderWindow::buffered(source);
    const auto* in = reinterpret_cast<const unsigned char*>(window.data());
    std::size_t left = window.size();
    if (held > 0) {
      const std::size_t n = std::min(N - held, left);
      std::memcpy(open + held, in, n);
      held += n;
      in += n;
      left -= n;
      if (held == N) {
        if (!each(open, N)) return false;
        held = 0;
      }
    }
    for (; left >= N; left -= N, in += N)
      if (!each(in, N)) return false;
    if (left > 0) {
      std::memcpy(open, in, left);
      held = left;
    }
    ReaderWindow::consume(source, window.size());
  }
  return held == 0 || each(open, held);
}

// Gives `decode` a writer for the data part of `target`, and `encode` a reader of that of `source`.
// kVoWriteFailed, kVoReadFailed: there is none; else what it returns.
template <class Decode>
VoErrorCode decodeInto(VoMsgResourceLocator& target, Decode&& decode) {
  const std::unique_ptr<VoMsgBufferedWriter> writer(target.getOutputStream(VoMsgResourceLocator::dataPart));
  return writer ? decode(*writer) : kVoWriteFailed;
}
template <class Encode>
VoErrorCode encodeFrom(const VoMsgResourceLocator& source, Encode&& encode) {
  const std::unique_ptr<VoMsgBufferedReader> reader(source.getInputStream(VoMsgResourceLocator::dataPart));
  return reader ? encode(*reader) : kVoReadFailed;
}

// The string forms, a stream codec run from one C string to another:
// Calls `codec(writer, reader, length)`, which says whether it succeeded, over `text`. The result is the caller's,
// for free(): null for a null `text` and on failure, "" when nothing comes out. A NUL that comes out ends it.
template <class Codec>
char* convertText(const char* text, Codec&& codec) {
  if (!text) return nullptr;
  return guardedOr<char*>(nullptr, [&]() -> char* {
    const std::size_t length = std::strlen(text);
    if (length == 0) return strdup("");
    if (length > static_cast<std::size_t>(std::numeric_limits<long>::max()) ||
        length > std::numeric_limits<unsigned>::max()) {
      return nullptr;
    }
    // The reader's interface takes no const; it only reads.
    VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(text)), static_cast<unsigned>(length));
    VoMsgMemoryWriter writer;
    if (!reader.open() || !codec(writer, reader, length)) return nullptr;
    const char* result = writer.getData();
    return strdup(result ? result : "");
  });
}

}  // namespace vomsg::detail
