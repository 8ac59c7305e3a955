// What holds for every codec, through its public functions.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "tests/support/Inputs.h"
#include "tests/support/MessageFixture.h"
#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/encoding/VoBase64.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoCompressedRtf.h"
#include "vomsg/encoding/VoHexChar.h"
#include "vomsg/encoding/VoQuotedPrintable.h"
#include "vomsg/encoding/VoUUEncode.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceManager.h"

namespace {

using namespace vomsg::test;
using vomsg::detail::CString;
using Resource = std::unique_ptr<VoMsgResourceLocator>;

// Complete lines that end in CR LF.
std::string lines(std::mt19937& random, std::size_t size) {
  std::string text;
  while (size > 2 && text.size() < size - 2) {
    const char c = static_cast<char>(random());
    text += c == '\n' || random() % 60 == 0 ? "\r\n" : std::string(1, c == '\r' ? ' ' : c);
  }
  return size == 0 ? "" : text + "\r\n";
}

// With runs of up to 253 equal bytes, the longest that BinHex brings back.
std::string runs(std::mt19937& random, std::size_t size) {
  std::string bytes;
  while (bytes.size() < size) {
    const char c = random() % 4 == 0 ? '\x90' : static_cast<char>(random());
    if (bytes.empty() || bytes.back() != c) bytes.append(random() % 3 == 0 ? random() % 253 + 1 : 1, c);
  }
  bytes.resize(size);
  return bytes;
}

VoErrorCode decodeBinHex(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long) {
  return voDecodeBinHex(target, source);
}
VoErrorCode decodeHex(VoMsgResourceLocator* target, VoMsgBufferedReader* source, long) {
  return voDecodeHexChar(target, source);
}

struct Codec {
  VoErrorCode (*encode)(VoMsgBufferedWriter*, const VoMsgResourceLocator*);
  VoErrorCode (*decode)(VoMsgResourceLocator*, VoMsgBufferedReader*, long);
  std::string (*content)(std::mt19937&, std::size_t);
  // Independent programs that do the same; null: none that we know.
  const char* tool;
  const char* theirEncoder;
  const char* theirDecoder;
};
const Codec kCodecs[] = {
    {voEncodeBase64, voDecodeBase64, randomBytes, "base64", "base64", "base64 -d -i"},
    {voEncodeQuotedPrintable, voDecodeQuotedPrintable, lines, "python3", nullptr, "python3 -m quopri -d"},
    {voEncodeUUEncode, voDecodeUUEncode, randomBytes, "uudecode", "uuencode a.bin", "uudecode -o /dev/stdout"},
    // This encoder writes a marker line of its own.
    {voEncodeBinHex, decodeBinHex, runs, "hexbin",
     "cat >file && binhex -d file | sed '1s/.*/(This file must be converted with BinHex 4.0)/'",
     "hexbin -d && cat *.data"},
};

Resource resourceOf(const std::string& bytes, bool isFile) {
  Resource resource(isFile ? VoMsgResourceManager::createTmpFileResource() : new VoMsgMemoryResource(0u, "a", nullptr));
  const std::unique_ptr<VoMsgBufferedWriter> writer(resource->getOutputStream(VoMsgResourceLocator::dataPart));
  EXPECT_TRUE(writer->write(bytes.data(), static_cast<unsigned>(bytes.size())) && writer->flush());
  return resource;
}

std::string encoded(const Codec& codec, const std::string& content, bool isFile = false) {
  LimitedWriter writer;
  EXPECT_EQ(codec.encode(&writer, resourceOf(content, isFile).get()), kVoSuccess);
  return writer.text;
}

std::string decoded(const Codec& codec, VoMsgBufferedReader& source, bool isFile = false) {
  const Resource target = resourceOf("what it held before", isFile);
  EXPECT_EQ(codec.decode(target.get(), &source, static_cast<long>(source.getSize())), kVoSuccess);
  return bytesOf(target.get());
}

TEST(Codecs, DecodeWhatTheyEncoded) {
  std::vector<std::size_t> sizes(301);
  for (std::size_t i = 0; i < sizes.size(); ++i) sizes[i] = i;
  for (const std::size_t around : {4096u, 8192u, 16384u, 32768u})
    for (std::size_t size = around - 2; size <= around + 2; ++size) sizes.push_back(size);
  std::mt19937 random(45);
  for (const Codec& codec : kCodecs) {
    SCOPED_TRACE(codec.tool);
    for (const std::size_t size : sizes) {
      const std::string content = codec.content(random, size);
      const bool isFile = size % 7 == 0;
      const std::string text = encoded(codec, content, isFile);
      const Resource source = resourceOf(text, isFile);
      const std::unique_ptr<VoMsgBufferedReader> reader(source->getInputStream(VoMsgResourceLocator::dataPart));
      WindowReader narrow(text, 1);
      ASSERT_EQ(decoded(codec, *reader, isFile), content) << size;
      ASSERT_EQ(decoded(codec, narrow), content) << size;
    }
  }
}

// In base64, padding does not end the open group; a decoded NUL ends the string.
TEST(Codecs, Strings) {
  using Rows = std::vector<std::pair<const char*, const char*>>;
  const std::pair<char* (*)(const char*), Rows> forms[] = {
      {voDecodeBase64,
       {{"QQ==", "A"},
        {"QQ==QQ==", "A\x04\x10"},
        {"QUI", "AB"},
        {"Q\x7FUJD", "ABC"},
        {"Q", ""},
        {"====", ""},
        {"AAAA", ""}}},
      {voEncodeBase64, {{"A", "QQ=="}, {"AB", "QUI="}, {"\xFB\xFF\xBF", "+/+/"}}},
      {voDecodeQuotedPrintable,
       {{"a=\r\nb", "ab"},
        {"a= \r\nb", "ab"},
        {"=ZZ x\r\ny", "ZZxy"},
        {"a=41", "aA"},
        {"=c3=A9", "\xC3\xA9"},
        {"a=\nbc", "ab"},
        {"=", ""},
        {"=00x", ""}}},
      {voEncodeQuotedPrintable, {{"a \r\n", "a=20\r\n"}, {"a", "a\r\n"}, {"\r", "=0D\r\n"}, {".", ".\r\n"}}},
  };
  for (const auto& [form, rows] : forms) {
    EXPECT_EQ(form(nullptr), nullptr);
    for (const auto& [text, expected] : rows) EXPECT_STREQ(CString(form(text)).get(), expected) << text;
    EXPECT_STREQ(CString(form("")).get(), "");
  }
}

TEST(Codecs, AgreeWithIndependentTools) {
  std::mt19937 random(7);
  std::string missing;
  for (const Codec& codec : kCodecs) {
    if (!hasTool(codec.tool)) {
      missing.append(" ").append(codec.tool);
      continue;
    }
    for (const std::size_t size : {1u, 44u, 45u, 46u, 63u, 64u, 1000u, 40000u}) {
      const std::string content = codec.content(random, size);
      EXPECT_EQ(runTool(codec.theirDecoder, encoded(codec, content)), content) << codec.tool << size;
      if (!codec.theirEncoder) continue;
      const std::string theirs = runTool(codec.theirEncoder, content);
      WindowReader reader(theirs, 4096);
      EXPECT_EQ(decoded(codec, reader), content) << codec.tool << size;
    }
  }
  if (!missing.empty()) GTEST_SKIP() << "not there:" << missing;
}

// Takes no more than 50 bytes, as on a disk that is full.
class FullResource : public VoMsgMemoryResource {
 public:
  FullResource() : VoMsgMemoryResource(0u, nullptr, nullptr) {}
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType) const override { return new LimitedWriter(50); }
};

// Each failed call leaves one line, whatever it failed at.
TEST(Codecs, ReportWhatTheyCannotUse) {
  std::mt19937 random(1);
  VoMsgFileResource missing("/nowhere/file", nullptr, nullptr);
  FullResource full;
  RememberingLog log;
  const auto once = [&](auto call) {
    log.debug.clear();
    const VoErrorCode code = call();
    EXPECT_EQ(log.count("failed. (error code:"), 1);
    return code;
  };
  std::vector<Codec> codecs(std::begin(kCodecs), std::end(kCodecs));
  codecs.push_back({nullptr, voDecodeLZFu, randomBytes, "rtf", nullptr, nullptr});
  codecs.push_back({voEncodeHexChar, decodeHex, randomBytes, "hex", nullptr, nullptr});
  for (const Codec& codec : codecs) {
    SCOPED_TRACE(codec.tool);
    const bool isHex = codec.decode == decodeHex;
    const std::string content = std::string(100, 'x') + codec.content(random, 50000);
    const std::string text = codec.encode ? encoded(codec, content) : content;
    const long size = static_cast<long>(text.size());
    for (VoMsgResourceLocator* target :
         {static_cast<VoMsgResourceLocator*>(&full), static_cast<VoMsgResourceLocator*>(&missing)}) {
      WindowReader reader(text, 4096);
      const VoErrorCode hexCode = target == &full ? kVoDecodeFailed : kVoNoMemory;
      EXPECT_EQ(once([&] { return codec.decode(target, &reader, size); }), isHex ? hexCode : kVoWriteFailed);
    }
    const Resource source = resourceOf(content, false);
    WindowReader reader(text, 4096);
    EXPECT_EQ(once([&] { return codec.decode(nullptr, &reader, size); }), kVoBadArgument);
    EXPECT_EQ(once([&] { return codec.decode(source.get(), nullptr, size); }), kVoBadArgument);
    if (!codec.encode) continue;
    for (const std::size_t limit : {std::size_t{0}, std::size_t{1}, text.size() / 2, text.size() - 1}) {
      LimitedWriter refusing(limit);
      EXPECT_EQ(once([&] { return codec.encode(&refusing, source.get()); }), isHex ? kVoEncodeFailed : kVoWriteFailed)
          << limit;
    }
    LimitedWriter writer;
    EXPECT_EQ(once([&] { return codec.encode(&writer, &missing); }), kVoReadFailed);
    EXPECT_EQ(once([&] { return codec.encode(nullptr, source.get()); }), kVoBadArgument);
    EXPECT_EQ(once([&] { return codec.encode(&writer, nullptr); }), kVoBadArgument);
  }
  // The steps that have whole operations around them, and the strings.
  LimitedWriter refusing(0);
  WindowReader reader("abcdefghi", 100);
  LZFu state;
  char* name = nullptr;
  const std::function<bool()> failing[] = {
      [&] { return _decodeLZFu(&state, &refusing, &reader, 9); },
      [&] { return _decodeLZFu(nullptr, &refusing, &reader, 9); },
      [&] { return _decodeUUEncode(&refusing, nullptr, 9, &name); },
      [&] { return _encodeUUEncode(&refusing, &reader, "n"); },
      [&] { return _encodeUUEncode(nullptr, &reader, "n"); },
      [&] { return !voFailed(voDecodeHexChar(&refusing, &reader)); },
      [&] { return !voFailed(voEncodeHexChar(&refusing, static_cast<VoMsgBufferedReader*>(nullptr))); },
  };
  for (const auto& call : failing) {
    reader.seek(-static_cast<long>(reader.getOffset()));
    EXPECT_NE(once([&] { return call() ? kVoSuccess : kVoWriteFailed; }), kVoSuccess);
  }
}

}  // namespace
