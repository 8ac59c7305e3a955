#include "vomsg/tnef/VoMsgTnefAttribute.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/WindowStreams.h"
#include "tests/tnef/StreamBuilder.h"
#include "vomsg/tnef/VoMsgTnefAttachData.h"

namespace vomsg::test {
namespace {

// Reads the record at `offset` of the data, whose ids are known.
VoErrorCode readAt(VoMsgTnefAttribute& record, VoMsgBufferedReader& reader, long offset) {
  reader.rseek(offset + 5, 0);
  int result = 0;
  record.readData(result, nullptr, &reader);
  return static_cast<VoErrorCode>(result);
}

std::string writtenBy(VoMsgTnefAttribute& record, VoMsgBufferedReader* source) {
  LimitedWriter writer;
  const VoErrorCode code = record.writeData(&writer, source);
  writer.flush();
  return voFailed(code) ? codeText(code) : writer.text;
}

// A record of each class.
struct Pair {
  VoMsgTnefAttribute inMemory{7, 0x1234, 0x8004};
  VoMsgTnefAttachData byReference{7, 0x1234, 0x8004};
  std::vector<VoMsgTnefAttribute*> both = {&inMemory, &byReference};
};

TEST(TnefAttribute, ReadsAndWritesBackWhateverTheSum) {
  for (const std::string& data : {std::string(), std::string("\0x\0\xFF", 4), std::string(70000, 'z')})
    for (const unsigned wrong : {0u, 1u}) {
      const std::string bytes = "junk" + record(0x8004, data, 7, 0x1234, wrong) + "more";
      for (const std::size_t window : {std::size_t{7}, bytes.size()}) {
        SCOPED_TRACE(std::to_string(data.size()) + " in windows of " + std::to_string(window));
        WindowReader reader(bytes, window);
        Pair pair;
        for (VoMsgTnefAttribute* one : pair.both) {
          ASSERT_EQ(readAt(*one, reader, 4), kVoSuccess);
          EXPECT_EQ(reader.getOffset(), bytes.size() - 4);
          EXPECT_EQ(one->getDataSize(), data.size());
          EXPECT_EQ(one->getOffset(), 4);
          EXPECT_EQ(one->getSize(), static_cast<int>(data.size() + 11));
          EXPECT_EQ(one->getCheckSum(), (sumOf(data) + wrong) & 0xFFFF);
          const std::unique_ptr<VoMsgTnefAttribute> copied(one->copy(nullptr));
          for (VoMsgTnefAttribute* each : {one, copied.get()}) {
            reader.rseek(0, 0);
            EXPECT_EQ(writtenBy(*each, &reader), bytes.substr(4, bytes.size() - 8));
            EXPECT_EQ(writtenBy(*each, nullptr), codeText(kVoWriteFailed));
          }
        }
        EXPECT_EQ(std::string_view(pair.inMemory.getData(), pair.inMemory.getData() ? data.size() : 0), data);
        EXPECT_EQ(pair.byReference.getData(), nullptr);
        reader.rseek(13, 0);
        EXPECT_EQ(pair.inMemory._verifyCheckSum(&reader, static_cast<unsigned>(data.size())), wrong == 0);
        EXPECT_EQ(reader.getOffset(), 13u);
      }
    }
}

TEST(TnefAttribute, RefusesRecordsBeyondTheEnd) {
  // The source has 20 bytes, and 3 are left behind the length field. A record in memory is measured against the whole
  // source, one by reference against what is left.
  const std::tuple<std::uint32_t, VoErrorCode, VoErrorCode> rows[] = {
      {3, kVoSuccess, kVoSuccess},
      {4, kVoSuccess, kVoReadFailed},
      {20, kVoSuccess, kVoReadFailed},
      {21, kVoReadFailed, kVoReadFailed},
      {1u << 31, kVoReadFailed, kVoReadFailed},
      {0xFFFFFFF5, kVoReadFailed, kVoReadFailed},
  };
  for (const auto& [length, inMemory, byReference] : rows) {
    SCOPED_TRACE(length);
    ExactReader exact(std::string(13, 'j') + le32(length) + "abc");
    Pair pair;
    EXPECT_EQ(readAt(pair.inMemory, exact.reader, 8), inMemory);
    EXPECT_EQ(readAt(pair.byReference, exact.reader, 8), byReference);
    if (inMemory == kVoSuccess) {
      EXPECT_EQ(std::string(pair.inMemory.getData(), length), "abc" + std::string(length - 3, '\0'));
    }
  }
  int result = 0;
  EXPECT_EQ(Pair().inMemory.readData(result, nullptr, nullptr), nullptr);
  EXPECT_EQ(Pair().byReference.readData(result, nullptr, nullptr), nullptr);
  EXPECT_EQ(result, static_cast<int>(kVoReadFailed));
}

TEST(TnefAttribute, TakesNewData) {
  Pair pair;
  for (VoMsgTnefAttribute* one : pair.both) {
    const auto want = [](const std::string& data) { return record(0x8004, data, 7, 0x1234); };
    one->setData("AB", 2);
    EXPECT_TRUE(one->_isModified());
    EXPECT_EQ(one->getDataSize(), 2u);
    EXPECT_EQ(one->getCheckSum(), 0x0083);
    EXPECT_EQ(one->getSize(), 13);
    EXPECT_EQ(one->getOffset(), 0);
    const std::unique_ptr<VoMsgTnefAttribute> copied(one->copy(nullptr));
    if (one == &pair.byReference) {
      VoMsgResourceLocator* none = nullptr;
      EXPECT_EQ(pair.byReference.setContent(none), kVoBadArgument);
      VoMsgResourceLocator* content = resourceOf("new content").release();
      EXPECT_EQ(pair.byReference.setContent(content), kVoSuccess);
      EXPECT_EQ(pair.byReference.setContent(content), kVoSuccess);  // its own resource again
      EXPECT_EQ(writtenBy(*one, nullptr), want("new content"));
      const std::unique_ptr<VoMsgTnefAttribute> withContent(one->copy(nullptr));
      EXPECT_EQ(writtenBy(*withContent, nullptr), want("new content"));
    }
    one->setData("", 0);
    EXPECT_EQ(writtenBy(*one, nullptr), want(""));
    EXPECT_EQ(writtenBy(*copied, nullptr), want("AB"));
    LimitedWriter full(0);
    one->setData(std::string(100, 'x').data(), 100);
    EXPECT_EQ(one->writeData(&full, nullptr), kVoWriteFailed);
  }
}

TEST(TnefAttachData, FetchesContentOnceAndOnDemand) {
  const std::string data(5000, 'd');
  const std::string bytes = record(0x800F, data);
  WindowReader reader(bytes, 64);
  VoMsgTnefAttachData one(2, 6, 0x800F);
  const VoMsgResourceLocator* kept = nullptr;
  EXPECT_EQ(one.getContent(&reader, kept), kVoNoContent);
  ASSERT_EQ(readAt(one, reader, 0), kVoSuccess);
  WindowReader shorter(std::string_view(bytes).substr(0, 100), 64);
  EXPECT_EQ(one.getContent(&shorter, kept), kVoTnefMalformed);
  EXPECT_EQ(one.getContent(nullptr, kept), kVoReadFailed);

  VoMsgMemoryResource target(0, nullptr, nullptr);
  const VoMsgResourceLocator* given = &target;
  EXPECT_EQ(one.getContent(&reader, given), kVoSuccess);
  EXPECT_EQ(bytesOf(&target), data);
  EXPECT_EQ(one.getContent(&reader, kept), kVoSuccess);
  EXPECT_EQ(bytesOf(kept), data);
  const VoMsgResourceLocator* again = nullptr;
  EXPECT_EQ(one.getContent(nullptr, again), kVoSuccess);
  EXPECT_EQ(again, kept);
}

TEST(TnefAttachData, KnowsAStreamInside) {
  const std::tuple<std::string, bool, unsigned> rows[] = {
      {le32(kVoTnefSignature) + "xy", true, 13}, {"abcdefgh", false, 19}, {"abc", false, 0}};
  for (const auto& [data, isStream, position] : rows) {
    ExactReader exact(record(0x800F, data) + "x");
    VoMsgTnefAttachData one(2, 6, 0x800F);
    readAt(one, exact.reader, 0);
    exact.reader.rseek(0, 0);
    EXPECT_EQ(one.hasTnefMessage(&exact.reader), isStream) << data;
    EXPECT_EQ(exact.reader.getOffset(), position) << data;
  }
}

}  // namespace
}  // namespace vomsg::test
