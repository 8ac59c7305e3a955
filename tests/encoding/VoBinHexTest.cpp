#include "vomsg/encoding/VoBinHex.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/Tools.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/encoding/VoBinHexCoding.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace {

using vomsg::test::LimitedWriter;
using vomsg::test::WindowReader;
using Locator = VoMsgResourceLocator;

std::string contentOf(const VoMsgMemoryResource& resource, Locator::VoMsgResourceDataType part) {
  const unsigned size = resource.getSize(part);
  return size == 0 ? "" : std::string(static_cast<const char*>(resource.getMemoryPointer(part)), size);
}

void fill(const Locator& resource, Locator::VoMsgResourceDataType part, const std::string& bytes) {
  const std::unique_ptr<VoMsgBufferedWriter> writer(resource.getOutputStream(part));
  ASSERT_TRUE(writer->write(bytes.data(), static_cast<unsigned>(bytes.size())) && writer->flush());
}

std::string encode(const std::string& data, const std::string& fork, const char* name) {
  VoMsgMemoryResource source(1u, name, "us-ascii");
  fill(source, Locator::dataPart, data);
  if (!fork.empty()) fill(source, Locator::resourceForkPart, fork);
  source.setFileType(0x54455854);
  source.setFileCreator(0x74747874);
  source.setFinderFlag(0x0102);
  LimitedWriter writer;
  EXPECT_EQ(voEncodeBinHex(&writer, &source), kVoSuccess);
  return writer.text;
}

// Random bytes with runs of up to 253 equal ones, the longest that survive.
std::string randomBytes(std::mt19937& random, std::size_t size) {
  std::string bytes;
  while (bytes.size() < size) {
    const char c = random() % 4 == 0 ? '\x90' : static_cast<char>(random());
    if (!bytes.empty() && bytes.back() == c) continue;
    bytes.append(random() % 3 == 0 ? random() % 253 + 1 : 1, c);
  }
  bytes.resize(size);
  return bytes;
}

TEST(BinHex, EncodesAndDecodesForksOfEveryLength) {
  std::mt19937 random(0x90);
  for (std::size_t size = 0; size < 33000; size += size < 300 ? 1 : 4057) {
    const std::string data = randomBytes(random, size), fork = randomBytes(random, size % 7 * 50);
    const std::string text = encode(data, fork, "a file");
    for (std::size_t at = 0, end; at < text.size(); at = end + 2) {
      end = text.find("\r\n", at);
      ASSERT_LE(end - at, 64u);
    }
    WindowReader reader(text, size % 2 == 0 ? 1 : 4096), again(text, 4096);
    VoMsgMemoryResource target(0u, nullptr, nullptr);
    ASSERT_EQ(voDecodeBinHex(&target, &reader), kVoSuccess) << size;
    ASSERT_EQ(contentOf(target, Locator::dataPart), data) << size;
    ASSERT_EQ(contentOf(target, Locator::resourceForkPart), fork) << size;
    EXPECT_STREQ(target.getResourceName("us-ascii"), "a file");
    EXPECT_EQ(target.getFileType(), 0x54455854u);
    EXPECT_EQ(target.getFileCreator(), 0x74747874u);
    EXPECT_EQ(target.getFinderFlag(), 0x0102);
    vomsg::detail::BinHexSummary summary;
    ASSERT_EQ(vomsg::detail::surveyBinHex(again, text.size(), summary), kVoSuccess);
    EXPECT_EQ(summary.dataSize, size);
  }
}

TEST(BinHex, EveryCutAndEveryChangedCharacterFails) {
  const std::string text = "see below\n" + encode("some data, some more", "fork", "name") + "after";
  const std::size_t start = text.find("\n:") + 2, colon = text.rfind(':');
  for (std::size_t n = 0; n < colon; ++n) {
    WindowReader cut(std::string_view(text).substr(0, n), 7), bounded(text, 7);
    VoMsgMemoryResource target(0u, "before", "us-ascii");
    EXPECT_EQ(voDecodeBinHex(&target, &cut), kVoDecodeFailed) << n;
    EXPECT_EQ(vomsg::detail::decodeBinHex(target, bounded, n), kVoDecodeFailed) << n;
    if (n < start + 10) {
      EXPECT_STREQ(target.getResourceName("us-ascii"), "before");
    }
    if (n < start || text[n] == '\r' || text[n] == '\n') continue;
    std::string changed = text;
    changed[n] = changed[n] == 'a' ? 'b' : 'a';
    WindowReader reader(changed, 100);
    // The last character also carries bits that mean nothing.
    if (n + 1 < colon) {
      EXPECT_EQ(voDecodeBinHex(&target, &reader), kVoDecodeFailed) << n;
    }
  }
}

TEST(BinHex, RunsOf254AreClosedWithACountOf255) {
  vomsg::detail::q_data_t q;
  LimitedWriter writer;
  vomsg::detail::q_init(q, writer);
  const std::string bytes(254, 'A');
  ASSERT_TRUE(vomsg::detail::setqbuf(q, bytes.data(), bytes.size()) && vomsg::detail::setq_flush(q) && writer.flush());
  LimitedWriter raw;
  vomsg::detail::q_init(q, raw);
  for (const char byte : {'A', '\x90', '\xFF'})
    ASSERT_TRUE(vomsg::detail::setq_raw(q, static_cast<unsigned char>(byte)));
  ASSERT_TRUE(vomsg::detail::setq_flush(q) && raw.flush());
  EXPECT_EQ(writer.text, raw.text);
}

TEST(BinHex, ForksThatNobodyCouldHaveSentAreRefusedAtOnce) {
  vomsg::detail::q_data_t q;
  LimitedWriter writer;
  vomsg::detail::q_init(q, writer);
  bool written = vomsg::detail::setq(q, 1) && vomsg::detail::setq(q, 'a');
  for (int i = 0; i < 11; ++i) written = written && vomsg::detail::setq(q, 0);
  written = written && vomsg::detail::set4q(q, 0xFFFFFFF0u) && vomsg::detail::set4q(q, 0);
  ASSERT_TRUE(written && vomsg::detail::writeCRC(q) && vomsg::detail::setq_flush(q) && writer.flush());
  const std::string text = std::string(vomsg::detail::kBinHexMarker) + "\n:" + writer.text;
  WindowReader reader(text, 100);
  VoMsgMemoryResource target(0u, "before", "us-ascii");
  EXPECT_EQ(voDecodeBinHex(&target, &reader), kVoDecodeFailed);
  EXPECT_EQ(target.getSize(Locator::dataPart), 0u);
  EXPECT_STREQ(target.getResourceName("us-ascii"), "before");
}

TEST(BinHex, Names) {
  for (const auto& [name, expected] :
       {std::pair<std::string, std::string>{"", "noname"}, {std::string(80, 'n'), std::string(63, 'n')}}) {
    const std::string text = encode("x", "", name.c_str());
    WindowReader reader(text, 100);
    VoMsgMemoryResource target(0u, nullptr, nullptr);
    ASSERT_EQ(voDecodeBinHex(&target, &reader), kVoSuccess);
    EXPECT_EQ(target.getResourceName("us-ascii"), expected);
  }
  EXPECT_EQ(voDecodeBinHex(nullptr, nullptr), kVoBadArgument);
  EXPECT_EQ(voEncodeBinHex(nullptr, nullptr), kVoBadArgument);
}

TEST(BinHex, ReportsARefusedWrite) {
  VoMsgMemoryResource source(5000u, "n", "us-ascii");
  for (const std::size_t limit : {0u, 50u, 90u}) {
    LimitedWriter writer(limit);
    EXPECT_EQ(voEncodeBinHex(&writer, &source), kVoWriteFailed) << limit;
  }
}

TEST(BinHex, AgreesWithTheSystemsTools) {
  if (!vomsg::test::hasTool("hexbin") || !vomsg::test::hasTool("binhex")) GTEST_SKIP() << "no macutils";
  std::mt19937 random(12);
  for (const std::size_t size : {1u, 63u, 64u, 1000u, 40000u}) {
    const std::string data = randomBytes(random, size);
    EXPECT_EQ(vomsg::test::runTool("hexbin -d && cat *.data", encode(data, "fork", "file")), data) << size;
    // The tool writes a marker line of its own.
    std::string theirs = vomsg::test::runTool("cat >file && binhex -d file", data);
    theirs.replace(0, theirs.find('\n'), vomsg::detail::kBinHexMarker);
    WindowReader reader(theirs, 100);
    VoMsgMemoryResource target(0u, nullptr, nullptr);
    ASSERT_EQ(voDecodeBinHex(&target, &reader), kVoSuccess) << size;
    EXPECT_EQ(contentOf(target, Locator::dataPart), data) << size;
  }
}

}  // namespace
