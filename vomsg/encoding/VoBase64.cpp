#include "vomsg/encoding/VoBase64.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string_view>

#include "vomsg/encoding/VoBase64Decoder.h"
#include "vomsg/encoding/VoCodecSupport.h"
#include "vomsg/encoding/VoPieceSink.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

constexpr std::size_t kPiece = 16384;  // decoded at once, so that the result is still in the first cache when written
constexpr std::uint64_t kChunk = 4096;
constexpr std::size_t kLineBytes = 57;  // carried by a line of 76 characters
constexpr std::size_t kLineChars = 76;
constexpr std::size_t kBatchLines = 128;

}  // namespace

bool decodeBase64To(PieceSink& sink, VoMsgBufferedReader& source, std::uint64_t length) {
  Base64Decoder decoder;
  std::array<char, kPiece / 4 * 3 + 3 + kBase64Slack> out;
  std::uint64_t done = 0;
  char chunkStart = 0;
  while (done < length && ReaderWindow::fill(source)) {
    const std::string_view piece = ReaderWindow::buffered(source).substr(
        0, static_cast<std::size_t>(std::min<std::uint64_t>(length - done, kPiece)));
    const std::uint64_t lastChunk = (done + piece.size() - 1) / kChunk * kChunk;
    if (lastChunk >= done) chunkStart = piece[static_cast<std::size_t>(lastChunk - done)];
    const std::size_t decoded = decoder.decode(piece.data(), piece.size(), out.data());
    done += piece.size();
    ReaderWindow::consume(source, piece.size());
    if (decoded > 0 && !sink.put({out.data(), decoded})) return false;
  }
  if (done == 0) return true;
  // The first byte of the last chunk stands for what is missing.
  std::uint64_t missing = std::min(length - done, done + kMostFiller);
  std::array<char, kChunk> filler;
  filler.fill(chunkStart);
  while (missing > 0) {
    const std::size_t n = static_cast<std::size_t>(std::min(missing, kChunk));
    if (!sink.put({out.data(), decoder.decode(filler.data(), n, out.data())})) return false;
    missing -= n;
  }
  return true;
}

namespace {

// Two characters for each twelve bits: half the look-ups.
constexpr std::array<std::array<char, 2>, 4096> kPairs = [] {
  std::array<std::array<char, 2>, 4096> pairs{};
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (std::size_t i = 0; i < pairs.size(); ++i) pairs[i] = {kAlphabet[i >> 6], kAlphabet[i & 63]};
  return pairs;
}();

// Whole groups, then a padded one for one or two bytes left over. Returns the end of what it wrote.
char* encodeGroups(const unsigned char* in, std::size_t n, char* out) {
  for (; n >= 3; n -= 3, in += 3, out += 4) {
    const unsigned group = static_cast<unsigned>(in[0] << 16 | in[1] << 8 | in[2]);
    std::memcpy(out, kPairs[group >> 12].data(), 2);
    std::memcpy(out + 2, kPairs[group & 4095].data(), 2);
  }
  if (n == 0) return out;
  const char* const alphabet = base64table_char;
  const unsigned group = static_cast<unsigned>(in[0] << 16 | (n == 2 ? in[1] << 8 : 0));
  *out++ = alphabet[group >> 18];
  *out++ = alphabet[group >> 12 & 63];
  *out++ = n == 2 ? alphabet[group >> 6 & 63] : '=';
  *out++ = '=';
  return out;
}

// Collects lines and writes them in batches.
class LineEncoder {
 public:
  LineEncoder(VoMsgBufferedWriter& target, bool lineBreaks) : mTarget(target), mLineBreaks(lineBreaks) {}

  bool line(const unsigned char* in, std::size_t n) {
    mTo = encodeGroups(in, n, mTo);
    if (mLineBreaks) {
      *mTo++ = '\r';
      *mTo++ = '\n';
    }
    return ++mLines < kBatchLines || emit();
  }

  bool emit() {
    const std::size_t n = static_cast<std::size_t>(mTo - mOut.data());
    mTo = mOut.data();
    mLines = 0;
    return n == 0 || WriterAccess::writeThrough(mTarget, mOut.data(), n);
  }

 private:
  VoMsgBufferedWriter& mTarget;
  bool mLineBreaks;
  std::size_t mLines = 0;
  std::array<char, kBatchLines*(kLineChars + 2)> mOut;
  char* mTo = mOut.data();
};

bool encodeAll(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, bool lineBreaks) {
  WriterAccess::expect(target, (bytesLeft(source) / kLineBytes + 1) * (kLineChars + 2));
  LineEncoder lines(target, lineBreaks);
  return forEachStretch<kLineBytes>(source,
                                    [&](const unsigned char* in, std::size_t n) { return lines.line(in, n); }) &&
         lines.emit() && target.flush();
}

}  // namespace

VoErrorCode decodeBase64(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, std::uint64_t length) {
  WriterAccess::expect(target, std::min(length, bytesLeft(source)) / 4 * 3 + 3);
  WriterSink sink(target);
  return decodeBase64To(sink, source, length) && target.flush() ? kVoSuccess : kVoWriteFailed;
}

std::uint64_t countBase64(VoMsgBufferedReader& source, std::uint64_t length) {
  CountingSink sink;
  decodeBase64To(sink, source, length);
  return sink.count;
}

VoErrorCode encodeBase64(VoMsgBufferedWriter& target, VoMsgBufferedReader& source, bool lineBreaks) {
  return encodeAll(target, source, lineBreaks) ? kVoSuccess : kVoWriteFailed;
}

}  // namespace vomsg::detail

using namespace vomsg::detail;

namespace {
constexpr char kLogSource[] = "VoBase64";
}

VoErrorCode voDecodeBase64(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long length) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  const std::uint64_t size = length > 0 ? static_cast<std::uint64_t>(length) : 0;
  return VO_LOGGED("", guarded([&] {
                     return decodeInto(*target, [&](auto& writer) { return decodeBase64(writer, *source, size); });
                   }));
}

VoErrorCode voEncodeBase64(VoMsgBufferedWriter* target, const VoMsgResourceLocator* source) {
  if (!target || !source) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", guarded([&] {
                     return encodeFrom(*source, [&](auto& reader) { return encodeBase64(*target, reader, true); });
                   }));
}

char* voDecodeBase64(const char* text) {
  char* const decoded = convertText(text, [](auto& writer, auto& reader, std::size_t length) {
    return !voFailed(decodeBase64(writer, reader, length));
  });
  if (text && !decoded) VO_LOGGED("", kVoNoMemory);
  return decoded;
}

char* voEncodeBase64(const char* text) {
  char* const encoded = convertText(
      text, [](auto& writer, auto& reader, std::size_t) { return !voFailed(encodeBase64(writer, reader, false)); });
  if (text && !encoded) VO_LOGGED("", kVoNoMemory);
  return encoded;
}
