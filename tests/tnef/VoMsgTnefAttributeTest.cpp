#include "vomsg/tnef/VoMsgTnefAttribute.h"

#include <gtest/gtest.h>

#include "tests/support/WindowStreams.h"
#include "tests/tnef/StreamBuilder.h"
#include "vomsg/tnef/VoMsgTnefAttachData.h"

namespace vomsg::test {
namespace {

// Reads the record at `offset` of `bytes`, whose ids are known.
template <class Record>
int readAt(Record& record, VoMsgBufferedReader& reader, long offset, VoMsgTnefEntity* parent = nullptr) {
  reader.rseek(offset + 5, 0);
  int result = 0;
  record.readData(result, parent, &reader);
  return result;
}

std::string writtenBy(VoMsgTnefAttribute& record, VoMsgBufferedReader* source) {
  LimitedWriter writer;
  const VoErrorCode code = record.writeData(&writer, source);
  writer.flush();
  return voFailed(code) ? codeText(code) : writer.text;
}

TEST(TnefAttribute, ReadsAndWritesBackWhateverTheSum) {
  for (const std::string& data : {std::string(), std::string("\0x\0\xFF", 4), std::string(70000, 'z')})
    for (const unsigned wrong : {0u, 1u}) {
      SCOPED_TRACE(data.size());
      const std::string bytes = "junk" + record(0x8004, data, 7, 0x1234, wrong) + "more";
      for (const std::size_t window : {std::size_t{1}, std::size_t{7}, bytes.size()}) {
        WindowReader reader(bytes, window);
        VoMsgTnefAttribute inMemory(7, 0x1234, 0x8004);
        ASSERT_EQ(readAt(inMemory, reader, 4), static_cast<int>(kVoSuccess));
        EXPECT_EQ(inMemory.getDataSize(), data.size());
        if (!data.empty()) {
          EXPECT_EQ(std::string(inMemory.getData(), inMemory.getDataSize()), data);
        }
        EXPECT_EQ(inMemory.getOffset(), 4);
        EXPECT_EQ(inMemory.getSize(), static_cast<int>(data.size() + 11));
        EXPECT_EQ(inMemory.getCheckSum(), (sumOf(data) + wrong) & 0xFFFF);
        EXPECT_EQ(reader.getOffset(), bytes.size() - 4);

        VoMsgTnefAttachData byReference(7, 0x1234, 0x8004);
        ASSERT_EQ(readAt(byReference, reader, 4), static_cast<int>(kVoSuccess));
        EXPECT_EQ(byReference.getData(), nullptr);
        EXPECT_EQ(reader.getOffset(), bytes.size() - 4);
        const std::unique_ptr<VoMsgTnefAttribute> copied(byReference.copy(nullptr));
        for (VoMsgTnefAttribute* one : {&inMemory, static_cast<VoMsgTnefAttribute*>(&byReference), copied.get()}) {
          reader.rseek(0, 0);
          EXPECT_EQ(writtenBy(*one, &reader), bytes.substr(4, bytes.size() - 8));
          EXPECT_EQ(writtenBy(*one, nullptr), codeText(kVoWriteFailed));
        }
      }
    }
}

TEST(TnefAttribute, RefusesRecordsBeyondTheEnd) {
  struct Row {
    std::uint32_t length;
    VoErrorCode inMemory;     // measured against the whole source
    VoErrorCode byReference;  // measured against what is left
  };
  // The source has 20 bytes, and 3 are left behind the length field.
  const Row rows[] = {
      {3, kVoSuccess, kVoSuccess},
      {4, kVoSuccess, kVoReadFailed},
      {20, kVoSuccess, kVoReadFailed},
      {21, kVoReadFailed, kVoReadFailed},
      {0x7FFFFFFF, kVoReadFailed, kVoReadFailed},
      {0xFFFFFFF5, kVoReadFailed, kVoReadFailed},
      {0xFFFFFFFF, kVoReadFailed, kVoReadFailed},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.length);
    const std::string bytes = std::string(13, 'j') + le32(row.length) + "abc";
    ExactReader exact(bytes);
    VoMsgTnefAttribute inMemory(1, 2, 0x8004);
    EXPECT_EQ(readAt(inMemory, exact.reader, 8), static_cast<int>(row.inMemory));
    if (row.inMemory == kVoSuccess && row.length > 3) {
      EXPECT_EQ(std::string(inMemory.getData(), inMemory.getDataSize()), "abc" + std::string(row.length - 3, '\0'));
    }
    VoMsgTnefAttachData byReference(1, 2, 0x800F);
    EXPECT_EQ(readAt(byReference, exact.reader, 8), static_cast<int>(row.byReference));
    int result = 0;
    byReference.readData(result, nullptr, nullptr);
    EXPECT_EQ(result, static_cast<int>(kVoReadFailed));
  }
}

TEST(TnefAttribute, SetDataMakesARecordOfItsOwn) {
  VoMsgTnefAttribute inMemory(2, 1, 0x8010);
  VoMsgTnefAttachData byReference(2, 1, 0x8010);
  for (VoMsgTnefAttribute* one : {&inMemory, static_cast<VoMsgTnefAttribute*>(&byReference)}) {
    one->setData("AB", 2);
    EXPECT_TRUE(one->_isModified());
    EXPECT_EQ(one->getDataSize(), 2u);
    EXPECT_EQ(one->getCheckSum(), 0x0083);
    EXPECT_EQ(one->getSize(), 13);
    EXPECT_EQ(one->getOffset(), 0);
    EXPECT_EQ(writtenBy(*one, nullptr), record(0x8010, "AB", 2, 1));
    const std::unique_ptr<VoMsgTnefAttribute> copied(one->copy(nullptr));
    one->setData("", 0);
    EXPECT_EQ(writtenBy(*one, nullptr), record(0x8010, "", 2, 1));
    EXPECT_EQ(writtenBy(*copied, nullptr), record(0x8010, "AB", 2, 1));
    LimitedWriter full(0);
    one->setData(std::string(100, 'x').data(), 100);
    EXPECT_EQ(one->writeData(&full, nullptr), kVoWriteFailed);
  }
}

TEST(TnefAttribute, VerifiesASumAndReturns) {
  for (const unsigned wrong : {0u, 1u}) {
    const std::string data(3000, '\xEE');
    ExactReader exact(record(0x8004, data, 1, 1, wrong));
    exact.reader.rseek(9, 0);
    VoMsgTnefAttribute any(1, 1, 0x8004);
    EXPECT_EQ(any._verifyCheckSum(&exact.reader, 3000), wrong == 0);
    EXPECT_FALSE(any._verifyCheckSum(&exact.reader, 4000));
    EXPECT_EQ(exact.reader.getOffset(), 9u);
  }
}

TEST(TnefAttachData, FetchesContentOnceAndOnDemand) {
  const std::string data(5000, 'd');
  const std::string bytes = record(0x800F, data);
  WindowReader reader(bytes, 64);
  VoMsgTnefAttachData one(2, 6, 0x800F);
  ASSERT_EQ(readAt(one, reader, 0), static_cast<int>(kVoSuccess));

  VoMsgMemoryResource target(0, nullptr, nullptr);
  const VoMsgResourceLocator* given = &target;
  EXPECT_EQ(one.getContent(&reader, given), kVoSuccess);
  EXPECT_EQ(bytesOf(target), data);
  const VoMsgResourceLocator* kept = nullptr;
  EXPECT_EQ(one.getContent(nullptr, kept), kVoReadFailed);
  EXPECT_EQ(one.getContent(&reader, kept), kVoSuccess);
  EXPECT_EQ(bytesOf(*kept), data);
  const VoMsgResourceLocator* again = nullptr;
  EXPECT_EQ(one.getContent(nullptr, again), kVoSuccess);
  EXPECT_EQ(again, kept);

  VoMsgTnefAttachData empty(2, 6, 0x800F);
  const VoMsgResourceLocator* none = nullptr;
  EXPECT_EQ(empty.getContent(&reader, none), kVoNoContent);
  WindowReader shorter(std::string_view(bytes).substr(0, 100), 64);
  VoMsgTnefAttachData cut(2, 6, 0x800F);
  readAt(cut, reader, 0);
  EXPECT_EQ(cut.getContent(&shorter, none), kVoTnefMalformed);
}

TEST(TnefAttachData, SetContentTakesTheResource) {
  VoMsgTnefAttachData one(2, 6, 0x800F);
  VoMsgResourceLocator* none = nullptr;
  EXPECT_EQ(one.setContent(none), kVoBadArgument);
  VoMsgResourceLocator* content = resourceOf("new content").release();
  EXPECT_EQ(one.setContent(content), kVoSuccess);
  EXPECT_EQ(one.setContent(content), kVoSuccess);  // its own resource again
  EXPECT_EQ(one.getSize(), 22);
  EXPECT_EQ(one.getCheckSum(), sumOf("new content"));
  EXPECT_EQ(writtenBy(one, nullptr), record(0x800F, "new content"));
  const std::unique_ptr<VoMsgTnefAttribute> copied(one.copy(nullptr));
  one.setData("x", 1);
  EXPECT_EQ(writtenBy(one, nullptr), record(0x800F, "x"));
  EXPECT_EQ(writtenBy(*copied, nullptr), record(0x800F, "new content"));
}

TEST(TnefAttachData, KnowsAStreamInside) {
  struct Row {
    std::string data;
    bool is;
    unsigned position;
  };
  const Row rows[] = {
      {le32(kVoTnefSignature) + "xy", true, 13}, {"abcdefgh", false, 19}, {"abc", false, 0}, {"", false, 0}};
  for (const Row& row : rows) {
    ExactReader exact(record(0x800F, row.data) + "x");
    VoMsgTnefAttachData one(2, 6, 0x800F);
    readAt(one, exact.reader, 0);
    exact.reader.rseek(0, 0);
    EXPECT_EQ(one.hasTnefMessage(&exact.reader), row.is) << row.data;
    EXPECT_EQ(exact.reader.getOffset(), row.position) << row.data;
  }
}

}  // namespace
}  // namespace vomsg::test
