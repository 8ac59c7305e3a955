#include "vomsg/encoding/VoQuotedPrintable.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <string_view>

#include "vomsg/encoding/VoCodecSupport.h"
#include "vomsg/encoding/VoHexChar.h"
#include "vomsg/encoding/VoPieceSink.h"
#include "vomsg/encoding/VoQuotedPrintableDecoder.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

constexpr std::size_t kPiece = 16384;  // decoded at once, so that the result is still in the first cache when written

// The next byte, or -1 at the end of the data.
int readByte(VoMsgBufferedReader& source) {
  char c;
  return source.read(&c, 1) == 1 ? static_cast<unsigned char>(c) : -1;
}

// One step of the decoder where the window ends inside an escape or a line end: takes single bytes across the
// edge and gives back what it looked at in vain. Returns the byte to write, or -1.
int stepAcrossEdge(QuotedPrintableState& state, VoMsgBufferedReader& source) {
  const int c = readByte(source);
  state.remaining -= 1;
  if (c == '=') {
    const int first = readByte(source);
    const int second = first < 0 ? -1 : readByte(source);
    if (hexCharToInt(first) >= 0 && hexCharToInt(second) >= 0) {
      state.remaining -= 2;
      return hexCharToInt(first) << 4 | hexCharToInt(second);
    }
    if (second >= 0) source.ungetChar();
    if (first >= 0) source.ungetChar();
    state.softBreak = true;
    return -1;
  }
  if (c == '\r' && state.softBreak) {
    const int next = readByte(source);
    if (next == '\n') {
      state.softBreak = false;
      state.remaining -= 1;
      return -1;
    }
    if (next >= 0) source.ungetChar();
  }
  return c;
}

}  // namespace

bool decodeQuotedPrintableTo(PieceSink& sink, VoMsgBufferedReader& source, std::uint64_t length, bool everyByte) {
  const std::uint64_t end = source.getOffset() + length;
  QuotedPrintableState state;
  state.remaining =
      static_cast<std::int64_t>(std::min<std::uint64_t>(length, std::numeric_limits<std::int64_t>::max()));
  const std::int64_t promised = state.remaining;
  std::array<char, kPiece + kLiteralSlack> out;
  while (state.remaining > 0 && ReaderWindow::fill(source)) {
    const std::string_view window = ReaderWindow::buffered(source);
    const auto* const in = reinterpret_cast<const unsigned char*>(window.data());
    auto* to = reinterpret_cast<unsigned char*>(out.data());
    const auto* const stop = decodeQuotedPrintableWindow(state, in, in + std::min(window.size(), kPiece), to);
    if (stop != in) {
      ReaderWindow::consume(source, static_cast<std::size_t>(stop - in));
    } else {
      const int c = stepAcrossEdge(state, source);
      if (c >= 0) *to++ = static_cast<unsigned char>(c);
    }
    const std::size_t decoded = static_cast<std::size_t>(to - reinterpret_cast<unsigned char*>(out.data()));
    if (decoded > 0 && !sink.put({out.data(), decoded})) return false;
    if (everyByte && state.remaining <= 0 && source.getOffset() < end)
      state.remaining = static_cast<std::int64_t>(end - source.getOffset());
  }
  if (state.remaining <= 0) return true;
  // 0xFF bytes stand for what is missing.
  std::int64_t missing = std::min(state.remaining, promised - state.remaining + std::int64_t{kMostFiller});
  out.fill('\xFF');
  while (missing > 0) {
    const std::size_t n = static_cast<std::size_t>(std::min<std::int64_t>(missing, kPiece));
    if (!sink.put({out.data(), n})) return false;
    missing -= static_cast<std::int64_t>(n);
  }
  return true;
}

bool decodeQuotedPrintable(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length) {
  WriterAccess::expect(target, std::min(length, bytesLeft(source)));
  WriterSink sink(target);
  return decodeQuotedPrintableTo(sink, source, length, false) && target.flush();
}

std::uint64_t countQuotedPrintable(VoMsgBufferedReader& source, std::uint64_t length) {
  CountingSink sink;
  decodeQuotedPrintableTo(sink, source, length, false);
  return sink.count;
}

}  // namespace vomsg::detail

using namespace vomsg::detail;

namespace {
constexpr char kLogSource[] = "VoQuotedPrintable";
}

VoErrorCode voDecodeQuotedPrintable(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  const std::uint64_t size = length > 0 ? static_cast<std::uint64_t>(length) : 0;
  return VO_LOGGED("", guarded([&] {
                     return decodeInto(*target, [&](auto& writer) {
                       return decodeQuotedPrintable(writer, *source, size) ? kVoSuccess : kVoWriteFailed;
                     });
                   }));
}

VoErrorCode voEncodeQuotedPrintable(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", guarded([&] {
                     return encodeFrom(*source, [&](auto& reader) {
                       return encodeQuotedPrintable(*target, reader, true) ? kVoSuccess : kVoWriteFailed;
                     });
                   }));
}

char* voDecodeQuotedPrintable(const char* text) {
  char* const decoded = convertText(text, [](auto& writer, auto& reader, std::size_t length) {
    return decodeQuotedPrintable(writer, reader, length);
  });
  if (text && !decoded) VO_LOGGED("", kVoNoMemory);
  return decoded;
}

char* voEncodeQuotedPrintable(const char* text) {
  char* const encoded = convertText(
      text, [](auto& writer, auto& reader, std::size_t) { return encodeQuotedPrintable(writer, reader, false); });
  if (text && !encoded) VO_LOGGED("", kVoNoMemory);
  return encoded;
}
