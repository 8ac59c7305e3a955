// Codecs and the search for embedded blocks, from memory to memory through the library's streams, beside a memcpy into
// a fresh block, a line scan, and the plain loop one would write first. Bytes are those of the encoded or scanned text.
// The doubling rows are the nastiest shapes we know; their time for each byte must stay flat.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "vomsg/embedded/VoMsgEmbededScanner.h"
#include "vomsg/encoding/VoBase64.h"
#include "vomsg/encoding/VoBase64Decoder.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoCompressedRtf.h"
#include "vomsg/encoding/VoHexChar.h"
#include "vomsg/encoding/VoQuotedPrintable.h"
#include "vomsg/encoding/VoUUEncode.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"

namespace {

using namespace vomsg::detail;
using Codec = bool (*)(VoMsgBufferedWriter&, VoMsgBufferedReader&, std::size_t);

constexpr std::size_t kSize = 32 << 20;

std::string randomBytes(std::size_t size) {
  std::mt19937 random(1);
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

// Words and lines; every `foreign`-th word gets a letter of two UTF-8 bytes.
std::string prose(std::size_t size, unsigned foreign) {
  std::mt19937 random(2);
  std::string text;
  std::size_t column = 0;
  while (text.size() < size) {
    const std::size_t start = text.size();
    for (std::size_t n = random() % 9 + 1; n > 0; --n) text += static_cast<char>('a' + random() % 26);
    if (random() % foreign == 0) text += "\xC3\xA9";
    column += text.size() - start + 1;
    text += column > 70 ? "\r\n" : " ";
    if (column > 70) column = 0;
  }
  return text;
}

std::string ideographs(std::size_t size) {
  std::mt19937 random(3);
  std::string text;
  while (text.size() < size) {
    for (int i = 0; i < 20; ++i) {
      text += static_cast<char>(0xE4 + random() % 4);
      text += static_cast<char>(0x80 + random() % 64);
      text += static_cast<char>(0x80 + random() % 64);
    }
    text += "\r\n";
  }
  return text;
}

std::string pumped(Codec codec, const std::string& text) {
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(text.data())),
                           static_cast<unsigned>(text.size()));
  VoMsgMemoryWriter writer;
  reader.open();
  codec(writer, reader, text.size());
  return std::string(writer.getData(), writer.getLength());
}

bool base64Decode(VoMsgBufferedWriter& out, VoMsgBufferedReader& in, std::size_t n) {
  return !voFailed(decodeBase64(out, in, n));
}
bool base64Encode(VoMsgBufferedWriter& out, VoMsgBufferedReader& in, std::size_t) {
  return !voFailed(encodeBase64(out, in, true));
}
bool quotedDecode(VoMsgBufferedWriter& out, VoMsgBufferedReader& in, std::size_t n) {
  return decodeQuotedPrintable(out, in, n);
}
bool quotedEncode(VoMsgBufferedWriter& out, VoMsgBufferedReader& in, std::size_t) {
  return encodeQuotedPrintable(out, in, true);
}
bool uuDecode(VoMsgBufferedWriter& out, VoMsgBufferedReader& in, std::size_t n) {
  return _decodeUUEncode(&out, &in, static_cast<long>(n), nullptr);
}
bool uuEncode(VoMsgBufferedWriter& out, VoMsgBufferedReader& in, std::size_t) {
  return _encodeUUEncode(&out, &in, "x");
}
bool rtfDecode(VoMsgBufferedWriter& out, VoMsgBufferedReader& in, std::size_t n) {
  LZFu state;
  return _decodeLZFu(&state, &out, &in, static_cast<long>(n));
}

void run(benchmark::State& state, Codec codec, const std::string& text) {
  for (auto _ : state) {
    VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(text.data())),
                             static_cast<unsigned>(text.size()));
    VoMsgMemoryWriter writer;
    reader.open();
    if (!codec(writer, reader, text.size())) state.SkipWithError("the codec failed");
    benchmark::DoNotOptimize(writer.getData());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

// ---- yardsticks

void freshCopy(benchmark::State& state) {
  const std::string text = prose(kSize, 12);
  for (auto _ : state) {
    char* const copy = static_cast<char*>(std::malloc(text.size()));
    std::memcpy(copy, text.data(), text.size());
    benchmark::DoNotOptimize(copy);
    benchmark::ClobberMemory();
    std::free(copy);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

std::size_t countLines(const std::string& text) {
  std::size_t lines = 0;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at < end; ++lines) {
    const void* const found = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
    at = found ? static_cast<const char*>(found) + 1 : end;
  }
  return lines;
}

void lineScan(benchmark::State& state) {
  const std::string text = prose(2 * kSize, 12);
  for (auto _ : state) benchmark::DoNotOptimize(countLines(text));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void plainBase64Loop(benchmark::State& state) {
  const std::string text = pumped(base64Encode, randomBytes(kSize));
  for (auto _ : state) {
    char* const out = static_cast<char*>(std::malloc(text.size()));
    char* to = out;
    unsigned bits = 0, count = 0;
    for (const char c : text) {
      const std::int32_t value = base64table_int[static_cast<unsigned char>(c)];
      if (value < 0) continue;
      bits = bits << 6 | static_cast<unsigned>(value);
      if (++count % 4 != 0) continue;
      *to++ = static_cast<char>(bits >> 16);
      *to++ = static_cast<char>(bits >> 8);
      *to++ = static_cast<char>(bits);
    }
    benchmark::DoNotOptimize(to);
    benchmark::ClobberMemory();
    std::free(out);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void plainQuotedLoop(benchmark::State& state, Codec source, std::string (*text)(std::size_t)) {
  const std::string encoded = pumped(source, text(kSize));
  for (auto _ : state) {
    char* const out = static_cast<char*>(std::malloc(encoded.size()));
    char* to = out;
    for (std::size_t at = 0; at + 2 < encoded.size(); ++at) {
      if (encoded[at] != '=') {
        *to++ = encoded[at];
        continue;
      }
      const int high = hexCharToInt(encoded[at + 1]), low = hexCharToInt(encoded[at + 2]);
      if (high >= 0 && low >= 0) *to++ = static_cast<char>(high << 4 | low);
      at += 2;
    }
    benchmark::DoNotOptimize(to);
    benchmark::ClobberMemory();
    std::free(out);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(encoded.size()));
}

BENCHMARK(freshCopy);
BENCHMARK(lineScan);
BENCHMARK(plainBase64Loop);

std::string latin(std::size_t size) { return prose(size, 12); }
BENCHMARK_CAPTURE(plainQuotedLoop, latin, quotedEncode, latin);
BENCHMARK_CAPTURE(plainQuotedLoop, ideographs, quotedEncode, ideographs);

// ---- codecs

void decode(benchmark::State& state, Codec decoder, Codec encoder, std::string (*content)(std::size_t)) {
  run(state, decoder, pumped(encoder, content(kSize)));
}
void encode(benchmark::State& state, Codec encoder, std::string (*content)(std::size_t)) {
  run(state, encoder, content(kSize));
}

BENCHMARK_CAPTURE(decode, base64, base64Decode, base64Encode, randomBytes);
BENCHMARK_CAPTURE(decode, quoted_latin, quotedDecode, quotedEncode, latin);
BENCHMARK_CAPTURE(decode, quoted_ideographs, quotedDecode, quotedEncode, ideographs);
BENCHMARK_CAPTURE(decode, uuencode, uuDecode, uuEncode, randomBytes);
BENCHMARK_CAPTURE(encode, base64, base64Encode, randomBytes);
BENCHMARK_CAPTURE(encode, quoted_latin, quotedEncode, latin);
BENCHMARK_CAPTURE(encode, quoted_ideographs, quotedEncode, ideographs);
BENCHMARK_CAPTURE(encode, uuencode, uuEncode, randomBytes);

void base64Kernel(benchmark::State& state, Base64Kernel kernel) {
  if (!kernel) return state.SkipWithError("not on this processor");
  const std::string text = pumped(base64Encode, randomBytes(1 << 20));
  std::string out(text.size(), '\0');
  for (auto _ : state) benchmark::DoNotOptimize(Base64Decoder(kernel).decode(text.data(), text.size(), out.data()));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK_CAPTURE(base64Kernel, portable, &decodeBase64Portable);
BENCHMARK_CAPTURE(base64Kernel, ssse3, base64KernelSsse3());
BENCHMARK_CAPTURE(base64Kernel, avx2, base64KernelAvx2());

void binHexEncode(benchmark::State& state) {
  std::string bytes = randomBytes(kSize / 8);
  VoMsgMemoryResource source(bytes.data(), static_cast<unsigned>(bytes.size()), "x", nullptr);
  for (auto _ : state) {
    VoMsgMemoryWriter writer;
    if (voFailed(voEncodeBinHex(&writer, &source))) state.SkipWithError("the codec failed");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
void binHexDecode(benchmark::State& state) {
  std::string bytes = randomBytes(kSize / 8);
  VoMsgMemoryResource source(bytes.data(), static_cast<unsigned>(bytes.size()), "x", nullptr);
  VoMsgMemoryWriter encoded;
  voEncodeBinHex(&encoded, &source);
  std::string text(encoded.getData(), encoded.getLength());
  for (auto _ : state) {
    VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(text.data()), static_cast<unsigned>(text.size()));
    VoMsgMemoryResource target(0u, nullptr, nullptr);
    reader.open();
    if (voFailed(voDecodeBinHex(&target, &reader))) state.SkipWithError("the codec failed");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(binHexDecode);
BENCHMARK(binHexEncode);
void rtf(benchmark::State& state) { run(state, rtfDecode, randomBytes(kSize / 4)); }
BENCHMARK(rtf);

// ---- embedded blocks

// No line of the text begins like a block; as in any prose, some begin with the same letters.
void blockSearch(benchmark::State& state) {
  std::string text = prose(2 * kSize, 12);
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(text.data()), static_cast<unsigned>(text.size()));
  for (auto _ : state) {
    reader.open();
    EmbeddedPiece piece;
    if (EmbeddedScanner(reader, 0, static_cast<std::uint32_t>(text.size())).next(piece)) state.SkipWithError("a block");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(blockSearch);

void parseText(benchmark::State& state, const char* encoding, Codec encoder) {
  const std::string body = encoder ? pumped(encoder, prose(kSize, 12)) : prose(kSize, 12);
  std::string mail = "Content-Type: text/plain\r\nContent-Transfer-Encoding: ";
  mail.append(encoding).append("\r\n\r\n").append(body);
  for (auto _ : state) {
    VoMsgRfc822Message message;
    if (voFailed(message.readFrom(
            new VoMsgMemoryResource(mail.data(), static_cast<unsigned>(mail.size()), nullptr, nullptr))))
      state.SkipWithError("not read");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(mail.size()));
}
BENCHMARK_CAPTURE(parseText, plain, "8bit", nullptr);
BENCHMARK_CAPTURE(parseText, quoted, "quoted-printable", quotedEncode);
BENCHMARK_CAPTURE(parseText, base64, "base64", base64Encode);

// ---- doubling

void decodeShape(benchmark::State& state, Codec codec, const char* shape) {
  std::string text;
  while (text.size() < static_cast<std::size_t>(state.range(0))) text += shape;
  run(state, codec, text);
}
void scanShape(benchmark::State& state, const char* shape) {
  std::string text;
  while (text.size() < static_cast<std::size_t>(state.range(0))) text += shape;
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(text.data()), static_cast<unsigned>(text.size()));
  for (auto _ : state) {
    reader.open();
    EmbeddedScanner scanner(reader, 0, static_cast<std::uint32_t>(text.size()));
    for (EmbeddedPiece piece; scanner.next(piece);) benchmark::DoNotOptimize(piece);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
#define DOUBLING RangeMultiplier(2)->Range(1 << 20, 8 << 20)
BENCHMARK_CAPTURE(decodeShape, base64_every_other_byte_foreign, base64Decode, "A-")->DOUBLING;
BENCHMARK_CAPTURE(decodeShape, quoted_only_equals, quotedDecode, "=")->DOUBLING;
BENCHMARK_CAPTURE(decodeShape, quoted_torn_escapes, quotedDecode, "=4=\r")->DOUBLING;
BENCHMARK_CAPTURE(decodeShape, uu_lone_cr, uuDecode, "begin 6 a\r#86)C\r\r")->DOUBLING;
BENCHMARK_CAPTURE(scanShape, begins, "begin 6 a\n")->DOUBLING;
BENCHMARK_CAPTURE(scanShape, begins_with_data, "begin 6 a\n#86)C\n")->DOUBLING;
BENCHMARK_CAPTURE(scanShape, markers, "(This file must be converted with BinHex 4.0)\n\n:!!!!\n\n")->DOUBLING;
BENCHMARK_CAPTURE(scanShape, letters, "\nb\r(")->DOUBLING;

}  // namespace
