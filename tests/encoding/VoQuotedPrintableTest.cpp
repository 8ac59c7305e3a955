#include "vomsg/encoding/VoQuotedPrintable.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "tests/support/WindowStreams.h"
#include "vomsg/encoding/VoHexChar.h"
#include "vomsg/encoding/VoQuotedPrintableDecoder.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgOptions.h"

namespace {

using vomsg::detail::LiteralKernel;
using vomsg::test::LimitedWriter;
using vomsg::test::WindowReader;

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

std::string slowEncode(std::string_view text, bool softBreaks, bool encodeDot) {
  std::string out, line;
  constexpr std::size_t kNowhere = std::string::npos;
  std::size_t breakAt = kNowhere;
  const auto encoded = [&](unsigned char c) {
    breakAt = line.size();
    line += {'=', "0123456789ABCDEF"[c / 16], "0123456789ABCDEF"[c % 16]};
  };
  for (std::size_t at = 0; at < text.size(); ++at) {
    const unsigned char c = static_cast<unsigned char>(text[at]);
    bool endOfLine = false;
    if (c == '.' && encodeDot) {
      encoded(c);
    } else if (c > 0x20 && c < 0x7F && c != '=') {
      line += text[at];
    } else if (c == '\n') {
      endOfLine = true;
    } else if (c == '\r' && text.substr(at, 2) == "\r\n") {
      endOfLine = true;
      ++at;
    } else if (c == ' ' || c == '\t') {
      breakAt = line.size();
      line += text[at];
    } else {
      encoded(c);
    }
    if (endOfLine) {
      if (!line.empty() && (line.back() == ' ' || line.back() == '\t')) {
        const bool tooLong = line.size() > 74;
        const char blank = line.back();
        line.pop_back();
        line += std::string(tooLong && softBreaks ? "=\r\n" : "") + (blank == ' ' ? "=20" : "=09");
      }
      out += line + "\r\n";
      line.clear();
      breakAt = kNowhere;
    }
    if (line.size() > 75) {
      const std::size_t cut = breakAt != kNowhere ? breakAt : line.size() - 1;
      out += line.substr(0, cut) + (softBreaks ? "=\r\n" : "");
      line.erase(0, cut);
      breakAt = kNowhere;
    }
  }
  return line.empty() ? out : out + line + "\r\n";
}

std::string encode(std::string_view text, std::size_t window, bool softBreaks) {
  WindowReader reader(text, window);
  LimitedWriter writer;
  EXPECT_TRUE(vomsg::detail::encodeQuotedPrintable(writer, reader, softBreaks));
  return writer.text;
}

// Calls `each` with every string of up to `longest` of `bytes`.
template <class Each>
void forEveryString(std::string_view bytes, std::size_t longest, Each each) {
  for (std::size_t size = 0, count = 1; size <= longest; ++size, count *= bytes.size()) {
    for (std::size_t number = 0; number < count; ++number) {
      std::string text;
      for (std::size_t i = 0, rest = number; i < size; ++i, rest /= bytes.size()) text += bytes[rest % bytes.size()];
      each(text);
    }
  }
}

TEST(QuotedPrintable, EverySmallInputOfEveryLengthThroughEveryWindow) {
  forEveryString("\r\n=a z\x80", 5, [](const std::string& text) {
    for (std::size_t length = 0; length <= text.size() + 1; ++length) {
      const Decoded expected = slowDecode(text, static_cast<std::int64_t>(length));
      for (const std::size_t window : {1u, 2u, 100u}) {
        WindowReader reader(text, window), again(text, window);
        LimitedWriter writer;
        ASSERT_TRUE(vomsg::detail::decodeQuotedPrintable(writer, reader, length));
        ASSERT_EQ(writer.text, expected.bytes) << text << " " << length;
        ASSERT_EQ(reader.getOffset(), expected.used) << text << " " << length;
        ASSERT_EQ(vomsg::detail::countQuotedPrintable(again, length), expected.bytes.size());
      }
    }
  });
}

TEST(QuotedPrintable, EveryKernelDecodesAlikeHoweverTheTextIsCut) {
  static constexpr const char* kPieces[] = {"=\r\n", "=C3=A9", "=\n",  "=4",       "==",     "\r\n",
                                            "=zz ",  " \t",    "=\r ", "=  \r\nx", "\x80\t", "= \n"};
  std::vector<LiteralKernel> kernels{&vomsg::detail::copyLiteralPortable};
  if (const auto kernel = vomsg::detail::literalKernelSse2()) kernels.push_back(kernel);
  if (const auto kernel = vomsg::detail::literalKernelAvx2()) kernels.push_back(kernel);
  std::mt19937 random(76);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    const std::size_t run = round % 2 == 0 ? 5 : 90;
    while (text.size() < 1000) text += std::string(random() % run, 'x') + kPieces[random() % std::size(kPieces)];
    const std::size_t length = random() % text.size();
    const Decoded expected = slowDecode(text, static_cast<std::int64_t>(length));
    const std::unique_ptr<unsigned char[]> in(new unsigned char[text.size()]);
    text.copy(reinterpret_cast<char*>(in.get()), text.size());
    for (const LiteralKernel kernel : kernels) {
      const std::unique_ptr<unsigned char[]> out(new unsigned char[text.size() + vomsg::detail::kLiteralSlack]);
      vomsg::detail::QuotedPrintableState state{static_cast<std::int64_t>(length), false};
      unsigned char* to = out.get();
      const auto* const stop =
          vomsg::detail::decodeQuotedPrintableWindow(state, in.get(), in.get() + text.size(), to, kernel);
      // Three bytes may be missing to decide about the last "=".
      EXPECT_TRUE(state.remaining <= 0 || stop + 3 > in.get() + text.size());
      if (state.remaining > 0) continue;
      EXPECT_EQ(std::string(out.get(), to), expected.bytes) << round;
      EXPECT_EQ(static_cast<std::size_t>(stop - in.get()), expected.used) << round;
    }
    for (const std::size_t window : {1u, 7u, 333u}) {
      WindowReader reader(text, window);
      LimitedWriter writer;
      ASSERT_TRUE(vomsg::detail::decodeQuotedPrintable(writer, reader, length));
      ASSERT_EQ(writer.text, expected.bytes) << round;
      ASSERT_EQ(reader.getOffset(), expected.used) << round;
    }
  }
}

TEST(QuotedPrintable, AShortSourceReadsAs0xFFWithinReason) {
  WindowReader reader("ab", 10);
  LimitedWriter writer;
  ASSERT_TRUE(vomsg::detail::decodeQuotedPrintable(writer, reader, UINT64_MAX));
  EXPECT_EQ(writer.text, "ab" + std::string(2 + 4096, '\xFF'));
}

TEST(QuotedPrintable, EncodesAsTheSlowOneDoes) {
  forEveryString("\r\n= .a", 4, [](const std::string& text) {
    for (const std::size_t before : {0u, 71u, 72u, 73u, 74u, 75u, 76u, 150u}) {
      const std::string whole = std::string(before, 'x') + text + "yy";
      ASSERT_EQ(encode(whole, 2, true), slowEncode(whole, true, false)) << whole;
      ASSERT_EQ(encode(whole, 100, false), slowEncode(whole, false, false)) << whole;
    }
  });
  std::mt19937 random(20);
  constexpr std::string_view kBytes = "abcdefghij \t.=\r\n\x80";
  for (int round = 0; round < 300; ++round) {
    std::string text;
    const std::size_t plain = round % 2 == 0 ? 3 : 100;
    while (text.size() < 20000) text += std::string(random() % plain, 'x') + kBytes[random() % kBytes.size()];
    const std::string encoded = encode(text, random() % 3000 + 1, true);
    ASSERT_EQ(encoded, slowEncode(text, true, false)) << round;
  }
}

TEST(QuotedPrintable, DecodesWhatItEncoded) {
  std::mt19937 random(9);
  for (std::size_t size = 1; size < 2000; size += 13) {
    std::string text;
    while (text.size() < size) {
      const char c = static_cast<char>(random());
      text += c == '\n' ? "\r\n" : std::string(1, c);
    }
    text += "\r\n";
    const std::string encoded = encode(text, 100, true);
    EXPECT_EQ(slowDecode(encoded, static_cast<std::int64_t>(encoded.size())).bytes, text);
  }
}

TEST(QuotedPrintable, Strings) {
  struct Row {
    const char* text;
    const char* result;
  };
  constexpr Row kDecoded[] = {{"a=\r\nb", "ab"},     {"a= \r\nb", "ab"}, {"a=41", "aA"}, {"=ZZ x\r\ny", "ZZxy"},
                              {"a=\nbc", "ab"},      {"", ""},           {"=", ""},      {"=00x", ""},
                              {"=c3=A9", "\xC3\xA9"}};
  for (const Row& row : kDecoded) {
    const std::unique_ptr<char, decltype(&free)> decoded(voDecodeQuotedPrintable(row.text), &free);
    EXPECT_STREQ(decoded.get(), row.result) << row.text;
  }
  constexpr Row kEncoded[] = {{"a \r\n", "a=20\r\n"}, {"a", "a\r\n"}, {"\r", "=0D\r\n"}, {"", ""}, {".", ".\r\n"}};
  for (const Row& row : kEncoded) {
    const std::unique_ptr<char, decltype(&free)> encoded(voEncodeQuotedPrintable(row.text), &free);
    EXPECT_STREQ(encoded.get(), row.result) << row.text;
  }
  EXPECT_EQ(voDecodeQuotedPrintable(nullptr), nullptr);
  EXPECT_EQ(voEncodeQuotedPrintable(nullptr), nullptr);
}

TEST(QuotedPrintable, EncodesEveryDotWhenAsked) {
  const int before = VoMsgExtraOption;
  VoMsgSetEncodeDot(1);
  const std::string text = "a.b.\n.\n";
  EXPECT_EQ(encode(text, 10, true), slowEncode(text, true, true));
  VoMsgExtraOption = before;
}

TEST(QuotedPrintable, ReportsARefusedWrite) {
  const std::string text(100000, 'A');
  for (const std::size_t limit : {0u, 1u, 20000u, 99999u}) {
    LimitedWriter writer(limit), encoded(limit);
    WindowReader reader(text, 4096), again(text, 4096);
    EXPECT_FALSE(vomsg::detail::decodeQuotedPrintable(writer, reader, text.size()));
    EXPECT_FALSE(vomsg::detail::encodeQuotedPrintable(encoded, again, true));
  }
}

}  // namespace
