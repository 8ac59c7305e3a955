#include "vomsg/foundation/VoMsgBufferedWriter.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgLineWalk.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgShortage.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/foundation/VoMsgStreamCopy.h"

using vomsg::detail::ReaderWindow;
using vomsg::detail::WriterAccess;

namespace {

constexpr char kLogSource[] = "VoMsgBufferedWriter";
constexpr unsigned kDefaultBufferSize = 32768;

// Copies up to `n` bytes, window by window. `copied` is less than `n` when `source` ended early.
bool copyBytes(VoMsgBufferedReader& source, VoMsgBufferedWriter& target, std::uint64_t n, std::uint64_t& copied) {
  copied = 0;
  WriterAccess::expectFrom(target, source, n);
  while (copied < n && ReaderWindow::fill(source)) {
    std::string_view window = ReaderWindow::buffered(source);
    if (window.size() > n - copied) window = window.substr(0, static_cast<std::size_t>(n - copied));
    if (!WriterAccess::writeThrough(target, window.data(), window.size())) return false;
    ReaderWindow::consume(source, window.size());
    copied += window.size();
  }
  return true;
}

// Copies lines, each with `lineEnd` for its own terminator, until `n` bytes of `source` are used up. CR and LF
// stand nowhere but in a terminator, so the text of a stretch is what is left without them at its end.
VoErrorCode copyLines(VoMsgBufferedReader& source, VoMsgBufferedWriter& target, std::uint64_t n,
                      std::string_view lineEnd) {
  const auto put = [&](std::string_view text) { return target.write(text.data(), static_cast<unsigned>(text.size())); };
  const auto putText = [&](std::string_view stretch, bool) {
    while (!stretch.empty() && (stretch.back() == '\r' || stretch.back() == '\n')) stretch.remove_suffix(1);
    return put(stretch);
  };
  while (n > 0) {
    const vomsg::detail::WalkedLine line = vomsg::detail::walkLine(source, n, putText);
    if (!line.accepted || (line.terminatorLength > 0 && !put(lineEnd))) return kVoWriteFailed;
    if (line.length == 0) break;
    n -= line.length;
  }
  return kVoSuccess;
}

}  // namespace

VoMsgBufferedWriter::VoMsgBufferedWriter(unsigned bufferSize)
    : mBufferSize(bufferSize ? bufferSize : kDefaultBufferSize) {
  const std::uint64_t bytes = std::uint64_t{mBufferSize} + 16;
  mpBuffer = bytes <= std::numeric_limits<std::size_t>::max()
                 ? static_cast<char*>(std::malloc(static_cast<std::size_t>(bytes)))
                 : nullptr;
  if (!mpBuffer) vomsg::detail::noteShortage(kVoNoMemory);
}

VoMsgBufferedWriter::~VoMsgBufferedWriter() { std::free(mpBuffer); }

bool VoMsgBufferedWriter::write(const char* data, unsigned n) {
  if (n == 0) return true;
  if (!mpBuffer || !data) return false;
  for (;;) {
    const unsigned count = std::min(n, mBufferSize - mUsed);
    std::memcpy(mpBuffer + mUsed, data, count);
    mUsed += count;
    data += count;
    n -= count;
    // A target that takes nothing and says so with "true", like a file that is not open, must not end in a loop.
    if (mUsed == mBufferSize && (!writeBuffer() || mUsed == mBufferSize)) return false;
    if (n == 0) return true;
  }
}

bool VoMsgBufferedWriter::flush() { return writeBuffer(); }

VoErrorCode vomsg::detail::copyRest(VoMsgBufferedReader& source, VoMsgBufferedWriter& target) {
  std::uint64_t copied;
  return copyBytes(source, target, kNoLimit, copied) && target.flush() ? kVoSuccess : kVoWriteFailed;
}

VoErrorCode VoMsgBufferedWriter::copyFrom(VoMsgBufferedReader* source) {
  return VO_LOGGED("", source ? vomsg::detail::copyRest(*source, *this) : kVoBadArgument);
}

VoErrorCode VoMsgBufferedWriter::copyFrom(VoMsgBufferedReader* source, unsigned n) {
  if (!source) return VO_LOGGED("", kVoBadArgument);
  std::uint64_t copied;
  if (!copyBytes(*source, *this, n, copied) || !flush()) return VO_LOGGED("", kVoWriteFailed);
  return VO_LOGGED("", copied == n ? kVoSuccess : kVoReadFailed);
}

VoErrorCode VoMsgBufferedWriter::copyFromText(VoMsgBufferedReader* source, const char* htmlBreak) {
  if (!source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", copyLines(*source, *this, vomsg::detail::kNoLimit, htmlBreak ? "<br>" : "\r\n"));
}

VoErrorCode VoMsgBufferedWriter::copyFromText(VoMsgBufferedReader* source, unsigned n) {
  if (!source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", copyLines(*source, *this, n, "\r\n"));
}
