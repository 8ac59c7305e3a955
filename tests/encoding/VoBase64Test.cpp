#include "vomsg/encoding/VoBase64.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/Inputs.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/encoding/VoBase64Decoder.h"

namespace {

using namespace vomsg::test;
using vomsg::detail::Base64Decoder;

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
  std::vector<Base64Decoder> decoders{Base64Decoder(&vomsg::detail::decodeBase64Portable)};
  if (const auto kernel = vomsg::detail::base64KernelSsse3()) decoders.emplace_back(kernel);
  if (const auto kernel = vomsg::detail::base64KernelAvx2()) decoders.emplace_back(kernel);
  std::mt19937 random(4645);
  for (int round = 0; round < 900; ++round) {
    const unsigned dirt = round % 3 == 0 ? 1u << 30 : round % 3 == 1 ? 200 : 10;
    const std::string text = randomText(random, random() % 2000, dirt);
    const std::string expected = slowDecode(text);
    for (const Base64Decoder& decoder : decoders) {
      EXPECT_EQ(decodeInPieces(decoder, text, random, 4000), expected) << round;
      EXPECT_EQ(decodeInPieces(decoder, text, random, 50), expected) << round;
    }
  }
}

TEST(Base64, EverySmallInputThroughEveryWindow) {
  forEveryString("A/=\r\n`", 5, [](const std::string& text) {
    for (const std::size_t window : {1u, 3u, 64u}) {
      WindowReader reader(text, window), again(text, window);
      ASSERT_EQ(decode(reader, text.size()), slowDecode(text)) << text;
      ASSERT_EQ(vomsg::detail::countBase64(again, text.size()), slowDecode(text).size());
      ASSERT_EQ(reader.getOffset(), text.size());
    }
  });
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

TEST(Base64, WritesLinesOf76) {
  const std::string whole(57, '\xFF');
  for (const bool lineBreaks : {false, true}) {
    const std::string end = lineBreaks ? "\r\n" : "";
    const auto encode = [&](auto& writer, auto& reader) { vomsg::detail::encodeBase64(writer, reader, lineBreaks); };
    EXPECT_EQ(through(whole, 10, encode), std::string(76, '/') + end);
    EXPECT_EQ(through(whole + "A", 10, encode), std::string(76, '/') + end + "QQ==" + end);
  }
}

}  // namespace
