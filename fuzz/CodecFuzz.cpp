// The codecs. Any bytes decode to the same, however they are cut and whichever kernel runs; what was encoded decodes to
// itself; what a decoder counts is what it writes; no decoder leaves its length or multiplies its input without bound.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "vomsg/encoding/VoBase64.h"
#include "vomsg/encoding/VoBase64Decoder.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoCompressedRtf.h"
#include "vomsg/encoding/VoHexChar.h"
#include "vomsg/encoding/VoQuotedPrintable.h"
#include "vomsg/encoding/VoQuotedPrintableDecoder.h"
#include "vomsg/encoding/VoUUEncode.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"

namespace {

using namespace vomsg::detail;

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "violated: %s\n", what);
  std::abort();
}

// Runs `codec(writer, reader)` over the bytes in place and returns what it wrote.
template <class Codec>
std::string through(const std::string& bytes, Codec codec) {
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data())),
                           static_cast<unsigned>(bytes.size()));
  VoMsgMemoryWriter writer;
  reader.open();
  codec(writer, reader);
  writer.flush();
  return std::string(writer.getData(), writer.getLength());
}

void tryBase64(const std::string& bytes, std::size_t cut) {
  const std::string decoded = through(bytes, [&](auto& out, auto& in) { decodeBase64(out, in, bytes.size()); });
  Base64Decoder portable(&decodeBase64Portable);
  std::string pieces(bytes.size() + 2 * kBase64Slack + 6, '\0');
  std::size_t n = portable.decode(bytes.data(), cut, pieces.data());
  n += portable.decode(bytes.data() + cut, bytes.size() - cut, pieces.data() + n);
  require(pieces.substr(0, n) == decoded, "base64 decodes alike however it is cut");
  std::uint64_t count = 0;
  through(bytes, [&](auto&, auto& in) { count = countBase64(in, bytes.size()); });
  require(count == decoded.size(), "base64 is counted as it is decoded");
  const std::string encoded = through(bytes, [&](auto& out, auto& in) { encodeBase64(out, in, true); });
  require(through(encoded, [&](auto& out, auto& in) { decodeBase64(out, in, encoded.size()); }) == bytes, "base64");
}

void tryQuotedPrintable(const std::string& bytes) {
  const std::string decoded =
      through(bytes, [&](auto& out, auto& in) { decodeQuotedPrintable(out, in, bytes.size()); });
  require(decoded.size() <= bytes.size() + 1, "quoted-printable does not grow");
  std::uint64_t count = 0;
  through(bytes, [&](auto&, auto& in) { count = countQuotedPrintable(in, bytes.size()); });
  require(count == decoded.size(), "quoted-printable is counted as it is decoded");
  std::string text;
  for (const char c : bytes) text += c == '\n' ? "\r\n" : std::string(1, c);
  text += "\r\n";
  const std::string encoded = through(text, [&](auto& out, auto& in) { encodeQuotedPrintable(out, in, true); });
  std::string back = through(encoded, [&](auto& out, auto& in) { decodeQuotedPrintable(out, in, encoded.size()); });
  // A lone CR right before a line end is part of that line end, for the encoder as for every reader.
  std::erase(back, '\r');
  std::erase(text, '\r');
  require(back == text, "quoted-printable");
  for (const char* lineEnd : {"\r\n", "\n", ""}) {
    const std::string exact =
        through(bytes, [&](auto& out, auto& in) { encodeQuotedPrintableExactly(out, in, lineEnd); });
    require(through(exact, [&](auto& out, auto& in) { decodeQuotedPrintable(out, in, exact.size()); }) == bytes,
            "the exact form of quoted-printable");
  }
}

void tryUUEncode(const std::string& bytes) {
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data())),
                           static_cast<unsigned>(bytes.size()));
  VoMsgMemoryWriter writer;
  reader.open();
  const std::size_t length = bytes.size() / 2;
  _decodeUUEncode(&writer, &reader, static_cast<long>(length), nullptr);
  require(reader.getOffset() <= length, "uuencode stays within its length");
  const std::string encoded = through(bytes, [](auto& out, auto& in) { _encodeUUEncode(&out, &in, "n"); });
  require(through(encoded, [&](auto& out,
                               auto& in) { _decodeUUEncode(&out, &in, static_cast<long>(encoded.size()), nullptr); }) ==
              bytes,
          "uuencode");
}

std::size_t longestRun(const std::string& bytes) {
  std::size_t longest = 0, run = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    run = i > 0 && bytes[i] == bytes[i - 1] ? run + 1 : 1;
    longest = std::max(longest, run);
  }
  return longest;
}

void tryBinHex(std::string bytes) {
  const std::string marked = std::string(kBinHexMarker) + "\n:" + bytes;
  for (const std::string& text : {bytes, marked})
    through(text, [](auto&, auto& in) {
      VoMsgMemoryResource target(0u, nullptr, nullptr);
      voDecodeBinHex(&target, &in);
    });
  // Longer runs are the coder's documented exception; the header before may begin one.
  if (longestRun(bytes) > 240) return;
  VoMsgMemoryResource source(bytes.data(), static_cast<unsigned>(bytes.size()), "n", nullptr);
  VoMsgMemoryWriter writer;
  require(!voFailed(voEncodeBinHex(&writer, &source)), "BinHex encodes anything");
  const std::string encoded(writer.getData(), writer.getLength());
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  through(encoded, [&](auto&, auto& in) { require(!voFailed(voDecodeBinHex(&target, &in)), "BinHex reads itself"); });
  const unsigned size = target.getSize(VoMsgResourceLocator::dataPart);
  const auto* back = static_cast<const char*>(target.getMemoryPointer(VoMsgResourceLocator::dataPart));
  require(size == bytes.size() && (size == 0 || bytes.compare(0, size, back, size) == 0), "BinHex");
}

void tryRtf(const std::string& bytes) {
  const auto expand = [&](std::size_t length) {
    return through(bytes, [&](auto& out, auto& in) {
      LZFu state;
      _decodeLZFu(&state, &out, &in, static_cast<long>(length));
    });
  };
  const std::string whole = expand(bytes.size());
  require(whole.size() <= 9 * bytes.size(), "nothing expands further than its references say");
  require(expand(SIZE_MAX / 4).size() <= 9 * (2 * bytes.size() + 4096), "a length that is not there is bounded");
  require(whole.starts_with(expand(bytes.size() / 2)), "a part expands to the start of the whole");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t cut = data[0] % size;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  tryBase64(bytes, cut);
  tryQuotedPrintable(bytes);
  tryUUEncode(bytes);
  tryBinHex(bytes);
  tryRtf(bytes);
  through(bytes, [](auto& out, auto& in) { voDecodeHexChar(&out, &in); });
  return 0;
}
