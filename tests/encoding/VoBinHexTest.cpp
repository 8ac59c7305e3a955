#include "vomsg/encoding/VoBinHex.h"

#include <gtest/gtest.h>

#include "tests/support/MessageFixture.h"
#include "tests/support/WindowStreams.h"
#include "vomsg/encoding/VoBinHexCoding.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace {

using namespace vomsg::detail;
using vomsg::test::LimitedWriter;
using vomsg::test::WindowReader;
using Locator = VoMsgResourceLocator;

std::string encode(const std::string& data, const std::string& fork, const char* name) {
  VoMsgMemoryResource source(1u, name, "us-ascii");
  for (const auto part : {Locator::dataPart, Locator::resourceForkPart}) {
    const std::string& bytes = part == Locator::dataPart ? data : fork;
    const std::unique_ptr<VoMsgBufferedWriter> writer(source.getOutputStream(part));
    EXPECT_TRUE(writer->write(bytes.data(), static_cast<unsigned>(bytes.size())) && writer->flush());
  }
  source.setFileType(0x54455854);
  source.setFileCreator(0x74747874);
  source.setFinderFlag(0x0102);
  LimitedWriter writer;
  EXPECT_EQ(voEncodeBinHex(&writer, &source), kVoSuccess);
  return writer.text;
}

// What the layers make of what `put(q)` writes.
template <class Put>
std::string coded(Put put) {
  q_data_t q;
  LimitedWriter writer;
  q_init(q, &writer);
  EXPECT_TRUE(put(q) && setq_flush(q) && writer.flush());
  return writer.text;
}

TEST(BinHex, BothForksAndWhatTheFinderKnows) {
  const std::string longName(80, 'n');
  const struct {
    std::size_t size;
    std::string given, name;
  } rows[] = {{0, "", "noname"}, {1, longName, longName.substr(0, 63)}, {33000, "a file", "a file"}};
  for (const auto& [size, given, name] : rows) {
    std::string data(size, '\0');
    for (std::size_t i = 0; i < size; ++i) data[i] = static_cast<char>(i * i >> 5);  // begins with runs
    const std::string fork = data.substr(size / 2);
    const std::string text = encode(data, fork, given.c_str());
    for (std::size_t at = 0, end; at < text.size(); at = end + 2) {
      end = text.find("\r\n", at);
      ASSERT_LE(end - at, 64u);
    }
    WindowReader reader(text, 4096), again(text, 4096);
    VoMsgMemoryResource target(0u, nullptr, nullptr);
    ASSERT_EQ(voDecodeBinHex(&target, &reader), kVoSuccess) << size;
    EXPECT_EQ(vomsg::test::bytesOf(&target), data);
    EXPECT_EQ(vomsg::test::bytesOf(&target, Locator::resourceForkPart), fork);
    EXPECT_EQ(target.getResourceName("us-ascii"), name);
    EXPECT_EQ(target.getFileType(), 0x54455854u);
    EXPECT_EQ(target.getFileCreator(), 0x74747874u);
    EXPECT_EQ(target.getFinderFlag(), 0x0102);
    BinHexSummary summary;
    ASSERT_EQ(surveyBinHex(again, text.size(), summary), kVoSuccess);
    EXPECT_EQ(summary.dataSize, size);
  }
}

// The steps, with bytes in pieces, write and read what the two operations do.
TEST(BinHex, StepByStep) {
  const std::string data = "aaab\x90\x90" + std::string(200, 'x') + "abc", fork = "fork\x90";
  const macheader_t header = {4,
                              "name",
                              0x54455854,
                              0x74747874,
                              0x0102,
                              static_cast<std::uint32_t>(data.size()),
                              static_cast<std::uint32_t>(fork.size())};
  const std::string whole = encode(data, fork, "name");
  for (const std::size_t piece : {1u, 3u, 100u}) {
    q_data_t q;
    LimitedWriter writer;
    WindowReader rest(fork, piece);
    q_init(q, &writer);
    ASSERT_TRUE(writeBinHexHeader(q) && writeMacHeader(q, header));
    for (std::size_t at = 0; at < data.size(); at += piece)
      ASSERT_TRUE(setqbuf(q, data.data() + at, std::min(piece, data.size() - at)));
    ASSERT_TRUE(writeCRC(q) && writeResourceFork(q, &rest, header) == kVoSuccess && writeBinHexFooter(q));
    writer.flush();
    EXPECT_EQ(writer.text, whole);

    WindowReader reader(whole, piece);
    reader.seek(static_cast<long>(whole.find("\n:") + 2));
    macheader_t found;
    q_init(q, &reader);
    ASSERT_TRUE(do_q_header(q, found));
    EXPECT_EQ(std::string_view(found.name), "name");
    EXPECT_EQ(found.resourceLength, fork.size());
    std::uint16_t first;
    std::string bytes(data.size() - 2, '\0');
    ASSERT_TRUE(get2q(q, first) && getqbuf(q, bytes.data(), bytes.size()) && verify_crc(q));
    EXPECT_EQ(first, 0x6161);
    EXPECT_EQ(bytes, data.substr(2));
    bytes.resize(fork.size());
    ASSERT_TRUE(getqbuf(q, bytes.data(), bytes.size()) && verify_crc(q));
    EXPECT_EQ(bytes, fork);
    unsigned bits;
    EXPECT_FALSE(get6bits(q, bits));  // the closing colon
    EXPECT_FALSE(setq(q, 'x'));       // in the other direction
    WindowReader shorter(data, 10);
    shorter.seek(1);
    q_init(q, &writer);
    EXPECT_EQ(writeDataFork(q, &shorter, header), kVoReadFailed);
  }
}

TEST(BinHex, EveryCutAndEveryChangedCharacterFails) {
  const std::string text = "see below\n" + encode("some data, some more", "fork", "name") + "after";
  const std::size_t start = text.find("\n:") + 2, colon = text.rfind(':');
  for (std::size_t n = 0; n < colon; ++n) {
    WindowReader cut(std::string_view(text).substr(0, n), 7), bounded(text, 7);
    VoMsgMemoryResource target(0u, "before", "us-ascii");
    EXPECT_EQ(voDecodeBinHex(&target, &cut), kVoDecodeFailed) << n;
    EXPECT_EQ(decodeBinHex(target, bounded, n), kVoDecodeFailed) << n;
    if (n < start + 10) {
      EXPECT_STREQ(target.getResourceName("us-ascii"), "before");
    }
    // The last character also carries bits that mean nothing.
    if (n < start || n + 1 == colon || text[n] == '\r' || text[n] == '\n') continue;
    std::string changed = text;
    changed[n] = changed[n] == 'a' ? 'b' : 'a';
    WindowReader reader(changed, 100);
    EXPECT_EQ(voDecodeBinHex(&target, &reader), kVoDecodeFailed) << n;
  }
}

TEST(BinHex, RunsOf254AreClosedWithACountOf255) {
  EXPECT_EQ(coded([](q_data_t& q) { return setqbuf(q, std::string(254, 'A').data(), 254); }),
            coded([](q_data_t& q) { return setq_raw(q, 'A') && setq_raw(q, 0x90) && setq_raw(q, 0xFF); }));
}

TEST(BinHex, ForksThatNobodyCouldHaveSentAreRefusedAtOnce) {
  const std::string header = coded([](q_data_t& q) {
    return setqbuf(q, "\1a\0\0\0\0\0\0\0\0\0\0\0", 13) && set4q(q, 0xFFFFFFF0u) && set4q(q, 0) && writeCRC(q);
  });
  const std::string text = std::string(kBinHexMarker) + "\n:" + header;
  WindowReader reader(text, 100);
  VoMsgMemoryResource target(0u, "before", "us-ascii");
  EXPECT_EQ(voDecodeBinHex(&target, &reader), kVoDecodeFailed);
  EXPECT_STREQ(target.getResourceName("us-ascii"), "before");
}

}  // namespace
