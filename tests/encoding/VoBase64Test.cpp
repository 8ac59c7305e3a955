#include "vomsg/encoding/VoBase64.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "tests/support/WindowStreams.h"
#include "vomsg/encoding/VoBase64Decoder.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace {

using vomsg::detail::Base64Decoder;
using vomsg::test::LimitedWriter;
using vomsg::test::WindowReader;

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string slowDecode(std::string_view text) {
  std::string bits, bytes;
  for (const char c : text) {
    std::size_t value = c == '`' || c == '\xFF' ? 0 : kAlphabet.find(c);
    if (value == kAlphabet.npos) continue;
    for (int bit = 5; bit >= 0; --bit) bits += (value >> bit & 1) != 0 ? '1' : '0';
  }
  for (std::size_t at = 0; at + 8 <= bits.size(); at += 8)
    bytes += static_cast<char>(std::stoi(bits.substr(at, 8), nullptr, 2));
  return bytes;
}

std::string slowEncode(std::string_view bytes, bool lines) {
  std::string bits, text;
  for (const char c : bytes)
    for (int bit = 7; bit >= 0; --bit) bits += (c >> bit & 1) != 0 ? '1' : '0';
  while (bits.size() % 6 != 0) bits += '0';
  for (std::size_t at = 0; at < bits.size(); at += 6)
    text += kAlphabet[static_cast<std::size_t>(std::stoi(bits.substr(at, 6), nullptr, 2))];
  while (text.size() % 4 != 0) text += '=';
  if (!lines) return text;
  std::string out;
  for (std::size_t at = 0; at < text.size(); at += 76) out += text.substr(at, 76) + "\r\n";
  return out;
}

std::string decode(VoMsgBufferedReader& reader, std::uint64_t length) {
  LimitedWriter writer;
  EXPECT_EQ(vomsg::detail::decodeBase64(writer, reader, length), kVoSuccess);
  return writer.text;
}

// `pieces` long and exactly as large as they must be, so that a sanitizer sees one byte too far.
std::string decodeInPieces(Base64Decoder decoder, std::string_view text, std::mt19937& random, std::size_t longest) {
  std::string bytes;
  while (!text.empty()) {
    const std::size_t n = std::min(text.size(), random() % longest + 1);
    const std::unique_ptr<char[]> in(new char[n]), out(new char[n / 4 * 3 + 3 + vomsg::detail::kBase64Slack]);
    text.copy(in.get(), n);
    bytes.append(out.get(), decoder.decode(in.get(), n, out.get()));
    text.remove_prefix(n);
  }
  return bytes;
}

std::vector<Base64Decoder> everyDecoder() {
  std::vector<Base64Decoder> decoders{Base64Decoder(&vomsg::detail::decodeBase64Portable)};
  if (const auto kernel = vomsg::detail::base64KernelSsse3()) decoders.emplace_back(kernel);
  if (const auto kernel = vomsg::detail::base64KernelAvx2()) decoders.emplace_back(kernel);
  return decoders;
}

// Lines as mailers write them, every `dirt`-th byte replaced by any byte.
std::string randomText(std::mt19937& random, std::size_t size, unsigned dirt) {
  static constexpr const char* kEnds[] = {"\r\n", "\n", "", " \r\n"};
  const std::string end = kEnds[random() % 4];
  const std::size_t width = random() % 3 == 0 ? random() % 100 + 1 : 76;
  std::string text;
  while (text.size() < size) {
    for (std::size_t i = 0; i < width; ++i) text += kAlphabet[random() % 64];
    text += end;
  }
  for (char& c : text)
    if (random() % dirt == 0) c = static_cast<char>(random());
  return text;
}

TEST(Base64, EveryKernelDecodesAlikeHoweverTheTextIsCut) {
  std::mt19937 random(4645);
  for (int round = 0; round < 600; ++round) {
    const unsigned dirt = round % 3 == 0 ? 1u << 30 : round % 3 == 1 ? 200 : 10;
    const std::string text = randomText(random, random() % 2000, dirt);
    const std::string expected = slowDecode(text);
    for (const Base64Decoder& decoder : everyDecoder()) {
      EXPECT_EQ(decodeInPieces(decoder, text, random, 4000), expected) << round;
      EXPECT_EQ(decodeInPieces(decoder, text, random, 50), expected) << round;
    }
  }
}

TEST(Base64, EveryByteInEveryPlaceOfABlock) {
  std::mt19937 random(1);
  for (int c = 0; c < 256; ++c) {
    for (std::size_t at = 0; at < 36; ++at) {
      std::string text(80, 'Z');
      text[at] = static_cast<char>(c);
      for (const Base64Decoder& decoder : everyDecoder())
        ASSERT_EQ(decodeInPieces(decoder, text, random, 4000), slowDecode(text)) << c << " at " << at;
    }
  }
}

TEST(Base64, EverySmallInputThroughEveryWindow) {
  constexpr std::string_view kBytes = "A/=\r\n`";
  for (std::size_t size = 0, count = 1; size <= 5; ++size, count *= kBytes.size()) {
    for (std::size_t number = 0; number < count; ++number) {
      std::string text;
      for (std::size_t i = 0, rest = number; i < size; ++i, rest /= kBytes.size()) text += kBytes[rest % kBytes.size()];
      for (const std::size_t window : {1u, 3u, 64u}) {
        WindowReader reader(text, window), again(text, window);
        ASSERT_EQ(decode(reader, size), slowDecode(text)) << number;
        ASSERT_EQ(vomsg::detail::countBase64(again, size), slowDecode(text).size());
        ASSERT_EQ(reader.getOffset(), size);
      }
    }
  }
}

TEST(Base64, TakesExactlyItsLengthAndMakesUpForAShortSource) {
  const std::string text = "QUJDREVG";
  WindowReader part(text, 5), dry(text, 5), empty("", 5), huge(text, 5);
  EXPECT_EQ(decode(part, 4), "ABC");
  EXPECT_EQ(part.getOffset(), 4u);
  EXPECT_EQ(decode(dry, 12), slowDecode(text + "QQQQ"));
  EXPECT_EQ(decode(empty, 12), "");
  EXPECT_EQ(decode(huge, UINT64_MAX), slowDecode(text + std::string(text.size() + 4096, 'Q')));
  const std::string chunks = std::string(4096, 'B') + "CD" + std::string(2, 'E');
  WindowReader second(chunks, 1000);
  EXPECT_EQ(decode(second, 4104), slowDecode(chunks + "CCCC"));
}

TEST(Base64, EncodesInLinesAndBack) {
  std::mt19937 random(57);
  for (std::size_t size = 0; size < 40000; size += size < 300 ? 1 : size > 7000 && size < 7600 ? 7 : 997) {
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    WindowReader reader(bytes, size % 2 == 0 ? 57 : random() % 5000 + 1);
    LimitedWriter writer;
    ASSERT_EQ(vomsg::detail::encodeBase64(writer, reader, true), kVoSuccess);
    ASSERT_EQ(writer.text, slowEncode(bytes, true)) << size;
    WindowReader back(writer.text, 4096);
    ASSERT_EQ(decode(back, writer.text.size()), bytes) << size;
  }
}

TEST(Base64, Strings) {
  struct Row {
    const char* text;
    const char* decoded;
  };
  constexpr Row kRows[] = {
      {"QQ==", "A"},       {"QQ==QQ==", "A\x04\x10"},  // padding does not end the open group
      {"Q", ""},           {"", ""},
      {"====", ""},        {"QUI", "AB"},
      {"AAAA", ""},  // a decoded NUL ends the string
      {"Q\x7FUJD", "ABC"},
  };
  for (const Row& row : kRows) {
    const std::unique_ptr<char, decltype(&free)> decoded(voDecodeBase64(row.text), &free);
    EXPECT_STREQ(decoded.get(), row.decoded) << row.text;
  }
  const std::string bytes(200, 'x');
  const std::unique_ptr<char, decltype(&free)> encoded(voEncodeBase64(bytes.c_str()), &free);
  EXPECT_EQ(encoded.get(), slowEncode(bytes, false));
  EXPECT_EQ(voDecodeBase64(nullptr), nullptr);
  EXPECT_EQ(voEncodeBase64(nullptr), nullptr);
}

TEST(Base64, ReportsARefusedWrite) {
  const std::string text(100000, 'A');
  for (const std::size_t limit : {0u, 1u, 20000u, 74999u}) {
    LimitedWriter writer(limit), encoded(limit);
    WindowReader reader(text, 4096), again(text, 4096);
    EXPECT_EQ(vomsg::detail::decodeBase64(writer, reader, text.size()), kVoWriteFailed);
    EXPECT_EQ(vomsg::detail::encodeBase64(encoded, again, true), kVoWriteFailed);
  }
}

TEST(Base64, Resources) {
  char bytes[] = "some bytes";
  VoMsgMemoryResource source(bytes, 10, "a", "us-ascii"), target(16u, "b", "us-ascii");
  LimitedWriter writer;
  ASSERT_EQ(voEncodeBase64(&writer, &source), kVoSuccess);
  EXPECT_EQ(writer.text, "c29tZSBieXRlcw==\r\n");
  WindowReader reader(writer.text, 100);
  ASSERT_EQ(voDecodeBase64(&target, &reader, 18), kVoSuccess);
  ASSERT_EQ(target.getSize(VoMsgResourceLocator::dataPart), 10u);
  EXPECT_STREQ(static_cast<char*>(target.getMemoryPointer(VoMsgResourceLocator::dataPart)), bytes);
  EXPECT_EQ(voDecodeBase64(nullptr, &reader, 1), kVoBadArgument);
  EXPECT_EQ(voEncodeBase64(&writer, nullptr), kVoBadArgument);
}

}  // namespace
