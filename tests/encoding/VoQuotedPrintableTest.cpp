#include "vomsg/encoding/VoQuotedPrintable.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/Inputs.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/encoding/VoHexChar.h"
#include "vomsg/encoding/VoQuotedPrintableDecoder.h"
#include "vomsg/foundation/VoMsgOptions.h"

namespace {

using namespace vomsg::detail;
using namespace vomsg::test;

struct Decoded {
  std::string bytes;
  std::size_t used = 0;
};

// One byte at a time; `length` counts down as the wire format's users expect, quirks included.
Decoded slowDecode(std::string_view text, std::int64_t length) {
  Decoded result;
  std::size_t& at = result.used;
  bool soft = false;
  const auto peek = [&](std::size_t ahead) {
    return at + ahead < text.size() ? static_cast<unsigned char>(text[at + ahead]) : -1;
  };
  for (; length > 0; --length) {
    const int c = peek(0);
    at += c >= 0;
    if (c == '=') {
      const int high = hexCharToInt(peek(0)), low = hexCharToInt(peek(1));
      if (high >= 0 && low >= 0) {
        result.bytes += static_cast<char>(high * 16 + low);
        at += 2;
        length -= 2;
      } else {
        soft = true;
      }
    } else if (soft && (c == ' ' || c == '\t')) {
    } else if (soft && c == '\n') {
      soft = false;
      --length;
    } else if (soft && c == '\r' && peek(0) == '\n') {
      soft = false;
      ++at;
      --length;
    } else {
      result.bytes += static_cast<char>(c);
    }
  }
  return result;
}

std::string slowEncode(std::string_view text) {
  std::string out, line;
  constexpr std::size_t kNowhere = std::string::npos;
  std::size_t breakAt = kNowhere;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const unsigned char c = static_cast<unsigned char>(text[at]);
    const bool isBlank = c == ' ' || c == '\t';
    const bool isEncoded = !isBlank && (c < 0x21 || c > 0x7E || c == '=');
    if (isBlank || isEncoded) breakAt = line.size();
    if (c == '\n' || text.substr(at, 2) == "\r\n") {
      at += c == '\r';
      if (!line.empty() && (line.back() == ' ' || line.back() == '\t')) {
        const bool tooLong = line.size() > 74;
        const std::string blank = line.back() == ' ' ? "=20" : "=09";
        line.pop_back();
        line += (tooLong ? "=\r\n" : "") + blank;
      }
      out += line + "\r\n";
      line.clear();
      breakAt = kNowhere;
    } else if (isEncoded) {
      line += {'=', "0123456789ABCDEF"[c / 16], "0123456789ABCDEF"[c % 16]};
    } else {
      line += text[at];
    }
    if (line.size() > 75) {
      const std::size_t cut = breakAt != kNowhere ? breakAt : line.size() - 1;
      out += line.substr(0, cut) + "=\r\n";
      line.erase(0, cut);
      breakAt = kNowhere;
    }
  }
  return line.empty() ? out : out + line + "\r\n";
}

std::string encode(std::string_view text, std::size_t window, bool softBreaks) {
  return through(text, window, [&](auto& writer, auto& reader) { encodeQuotedPrintable(writer, reader, softBreaks); });
}

void checkDecoding(const std::string& text, std::size_t length) {
  const Decoded expected = slowDecode(text, static_cast<std::int64_t>(length));
  for (const std::size_t window : {1u, 2u, 333u}) {
    WindowReader reader(text, window), again(text, window);
    LimitedWriter writer;
    ASSERT_TRUE(decodeQuotedPrintable(writer, reader, length));
    ASSERT_EQ(writer.text, expected.bytes) << text << " " << length;
    ASSERT_EQ(reader.getOffset(), expected.used) << text << " " << length;
    ASSERT_EQ(countQuotedPrintable(again, length), expected.bytes.size());
  }
}

void checkEncoding(const std::string& text) {
  std::string expected = slowEncode(text);
  ASSERT_EQ(encode(text, 7, true), expected) << text;
  for (std::size_t at; (at = expected.find("=\r\n")) != expected.npos;) expected.erase(at, 3);
  ASSERT_EQ(encode(text, 100, false), expected) << text;
  for (const std::string lineEnd : {"\r\n", "\n", ""}) {
    const std::string exact =
        through(text, 7, [&](auto& writer, auto& reader) { encodeQuotedPrintableExactly(writer, reader, lineEnd); });
    ASSERT_EQ(slowDecode(exact, static_cast<std::int64_t>(exact.size())).bytes, text);
    for (std::size_t start = 0, end = 0; start < exact.size(); start = end) {
      end = std::min(exact.find_first_of("\r\n", start), exact.size());
      ASSERT_LE(end - start, 76u) << exact;
      ASSERT_NE(exact[end - (end > start)], ' ') << exact;
      const std::string found = exact.substr(end, exact[end] == '\r' ? 2 : 1);
      ASSERT_TRUE(end == exact.size() || found == (exact[end - (end > start)] == '=' ? "\r\n" : lineEnd)) << exact;
      end += found.size();
    }
  }
}

TEST(QuotedPrintable, EverySmallInputOfEveryLengthThroughEveryWindow) {
  forEveryString("\r\n=a z\x80", 5, [](const std::string& text) {
    for (std::size_t length = 0; length <= text.size() + 1; ++length) checkDecoding(text, length);
  });
}

TEST(QuotedPrintable, RandomTextThroughEveryWindowAndKernel) {
  static constexpr const char* kPieces[] = {"=\r\n", "=C3=A9", "=\n",  "=4",       "==",     "\r\n",
                                            "=zz ",  " \t",    "=\r ", "=  \r\nx", "\x80\t", "= \n"};
  std::vector<LiteralKernel> kernels{&copyLiteralPortable};
  if (const auto kernel = literalKernelSse2()) kernels.push_back(kernel);
  if (const auto kernel = literalKernelAvx2()) kernels.push_back(kernel);
  std::mt19937 random(76);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    const std::size_t run = round % 2 == 0 ? 5 : 90;
    while (text.size() < 1000) text += std::string(random() % run, 'x') + kPieces[random() % std::size(kPieces)];
    checkDecoding(text, random() % text.size());
    const std::size_t n = std::min(text.find('=', text.find('=') + 1), random() % 200);
    const std::unique_ptr<unsigned char[]> in(new unsigned char[n]), out(new unsigned char[n + kLiteralSlack]);
    text.copy(reinterpret_cast<char*>(in.get()), n);
    for (const LiteralKernel kernel : kernels) {
      unsigned char* to = out.get();
      const auto* const stop = kernel(in.get(), in.get() + n, to);
      EXPECT_EQ(static_cast<std::size_t>(stop - in.get()), std::min(text.find('='), n));
      EXPECT_EQ(std::string(out.get(), to), text.substr(0, std::min(text.find('='), n)));
    }
  }
}

TEST(QuotedPrintable, AShortSourceReadsAs0xFFWithinReason) {
  WindowReader reader("ab", 10);
  LimitedWriter writer;
  ASSERT_TRUE(decodeQuotedPrintable(writer, reader, UINT64_MAX));
  EXPECT_EQ(writer.text, "ab" + std::string(2 + 4096, '\xFF'));
}

TEST(QuotedPrintable, EncodesAsTheSlowOneDoesOrExactly) {
  forEveryString("\r\n= .a", 4, [](const std::string& text) {
    for (const std::size_t before : {0u, 71u, 72u, 73u, 74u, 75u, 76u, 150u})
      checkEncoding(std::string(before, 'x') + text + "yy");
    checkEncoding(text + std::string(80, 'x') + text);
  });
  std::mt19937 random(20);
  constexpr std::string_view kBytes = "abcdefghij \t.=\r\n\x80";
  for (int round = 0; round < 100; ++round) {
    std::string text;
    const std::size_t plain = round % 2 == 0 ? 3 : 100;
    while (text.size() < 20000) text += std::string(random() % plain, 'x') + kBytes[random() % kBytes.size()];
    checkEncoding(text);
  }
}

TEST(QuotedPrintable, EncodesEveryDotWhenAsked) {
  const int before = VoMsgExtraOption;
  VoMsgSetEncodeDot(1);
  VoMsgSetEncodeDot(0);  // does not take it back
  EXPECT_EQ(encode("a.b.\n.\n", 10, true), "a=2Eb=2E\r\n=2E\r\n");
  VoMsgExtraOption = before;
}

}  // namespace
