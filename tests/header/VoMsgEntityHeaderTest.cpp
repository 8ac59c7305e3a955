#include "vomsg/header/VoMsgEntityHeader.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/header/HeaderBlocks.h"
#include "tests/support/RememberingLog.h"

namespace {

using vomsg::test::ExactMemoryReader;
using vomsg::test::KeepOptions;
using vomsg::test::parseBlock;
using vomsg::test::written;

std::string repeated(const std::string& text, int count) {
  std::string out;
  for (int i = 0; i < count; ++i) out += text;
  return out;
}

// The survey's test unfolds whole blocks.
TEST(EntityHeader, UnfoldsOneLine) {
  ExactMemoryReader source("a\r\n \r\n\tb\n\tc\n\r\nd");
  for (const char* const want : {"a bc", "", "d", static_cast<const char*>(nullptr)})
    EXPECT_STREQ(vomsg::detail::CString(VoMsgEntityHeader().getNextLine(&source)).get(), want);
}

TEST(EntityHeader, HoldsTheLimitsAsTheyAre) {
  const KeepOptions keep;
  struct Row {
    std::string text;
    bool isChild;
    int options;
    bool noAddressLimit;
    bool passes;
    unsigned fields, addresses;
  };
  const std::string many = repeated("A: b\n", 101), parameters = "Content-Type: a" + repeated(";b=c", 99);
  const Row rows[] = {
      {repeated("A: b\n", 100) + "\n", false, 0, false, true, 100, 0},
      {many + "C: d\n\n", false, 0, false, false, 101, 0},
      {many, true, 0, true, false, 101, 0},
      {many + "C: d\n", true, kVoOptionNoChildHeaderLimit, false, true, 102, 0},
      {many, false, kVoOptionNoChildHeaderLimit, true, false, 101, 0},
      {parameters, false, 0, false, true, 1, 0},
      {parameters + ";b=c;b=c", false, 0, false, false, 1, 0},
      {parameters + ";b=c;b=c", true, 0, false, false, 1, 0},
      {parameters + ";b=c;b=c", true, kVoOptionNoChildParamLimit, false, true, 1, 0},
      {"To: " + repeated("a@b, ", 100), false, 0, false, true, 1, 100},
      {"To: " + repeated("a@b, ", 60) + "\nTo:" + repeated("a@b, ", 90), false, 0, false, false, 2, 101},
      {"To: " + repeated("a@b, ", 150), true, 0, false, false, 1, 101},
      {"To: " + repeated("a@b, ", 150), true, 0, true, true, 1, 150},
      {"To: " + repeated("a@b, ", 150), false, 0, true, false, 1, 101},
      {"Reply-To: " + repeated("a@b, ", 150), false, 0, false, true, 1, 0},
  };
  for (const Row& row : rows) {
    VoMsgExtraOption = row.options;
    NoMaxAddressForChild = row.noAddressLimit;
    VoErrorCode code = 0;
    const auto header = parseBlock(row.text, &code, row.isChild);
    EXPECT_EQ(code, row.passes ? kVoSuccess : kVoMalformed) << row.text;
    EXPECT_EQ(header->countHeaders(), row.fields) << row.text;
    EXPECT_EQ(header->countAddress("to"), row.addresses) << row.text;
  }
  VoMsgExtraOption = 0;
  VoMsgSetMaxHeaderParams(0);
  EXPECT_EQ(parseBlock(parameters + repeated(";b=c", 9))->getHeaderAt(0)->countParameter(), 108u);
}

TEST(EntityHeader, HandsTheDeclaredCharsetDown) {
  const auto header = parseBlock("From: a\nContent-Type: text/plain; charset=koi8-r\nX: y\n\n");
  EXPECT_STREQ(header->getHeader("x")->getDefaultCharset(), "koi8-r");
  EXPECT_STREQ(header->getAddressAt("FROM", 0)->getDefaultCharset(), "koi8-r");
  EXPECT_STREQ(parseBlock("X: y\nContent-Type: a; charset=\"\"\n")->getHeaderAt(0)->getDefaultCharset(), "us-ascii");
}

TEST(EntityHeader, KeepsTheBoundsOfItsFieldList) {
  const vomsg::test::RememberingLog log;
  VoMsgEntityHeader header;
  EXPECT_EQ(header.appendHeader(nullptr), kVoBadArgument);
  ASSERT_EQ(log.count("failed. (error code:81010008)"), 1);
  EXPECT_EQ(log.debug[0].file + "::" + log.debug[0].func, "VoMsgEntityHeader::appendHeader");
  EXPECT_EQ(header.removeHeaderAt(0), kVoOutOfRange);
  EXPECT_EQ(header.removeHeader("A"), kVoSuccess);
  EXPECT_FALSE(header.isNewHeader());
  EXPECT_EQ(log.debug.size(), 2u);
  auto field = std::make_unique<VoMsgHeaderField>("A", "1");
  EXPECT_EQ(header.insertHeaderAt(field.get(), 1), kVoOutOfRange);
  EXPECT_EQ(header.insertHeaderAt(field.release(), 0), kVoSuccess);
  field = std::make_unique<VoMsgHeaderField>("B", "2");
  EXPECT_EQ(header.insertHeaderAt(field.get(), 1), kVoOutOfRange);
  EXPECT_EQ(header.insertHeaderAt(field.release(), 0), kVoSuccess);
  EXPECT_EQ(header.appendHeader(new VoMsgHeaderField("a", "3")), kVoSuccess);
  EXPECT_TRUE(header.isEdited());
  EXPECT_EQ(written(header), "B: 2\r\nA: 1\r\na: 3\r\n\r\n");
  EXPECT_EQ(header.removeHeader("A"), kVoSuccess);
  EXPECT_EQ(header.countHeaders(), 1u);
  EXPECT_EQ(header.getHeader("a"), nullptr);
  const auto shorter = parseBlock("A: b\n\n");
  EXPECT_EQ(shorter->removeHeaderAt(0), kVoSuccess);
  EXPECT_TRUE(std::unique_ptr<VoMsgEntityHeader>(shorter->newCopy())->isEdited());
  EXPECT_EQ(header.getHeader(nullptr), nullptr);
  EXPECT_EQ(header.getHeaderAt(1), nullptr);
}

TEST(EntityHeader, EditsAddresses) {
  const auto header = parseBlock("To: a, b\r\nSubject: s\r\nTo: c\r\n\r\n");
  EXPECT_EQ(header->countAddress("To"), 3u);
  EXPECT_EQ(header->countAddress("Subject"), 0u);
  EXPECT_EQ(header->getAddressAt("Reply-To", 0), nullptr);
  EXPECT_EQ(header->appendAddress("Reply-To", "x"), kVoBadArgument);
  EXPECT_EQ(header->appendAddress(nullptr, "x"), kVoBadArgument);
  EXPECT_EQ(header->insertAddressAt("To", static_cast<const char*>(nullptr), 9), kVoBadArgument);
  EXPECT_EQ(header->insertAddressAt("To", "x", 3), kVoOutOfRange);
  EXPECT_EQ(header->removeAddressAt("To", 3), kVoOutOfRange);
  EXPECT_FALSE(header->isNewHeader());

  EXPECT_EQ(header->insertAddressAt("To", "x", 1), kVoSuccess);
  EXPECT_EQ(header->removeAddressAt("To", 0), kVoSuccess);
  auto address = std::make_unique<VoMsgUserAddress>("y");
  EXPECT_EQ(header->insertAddressAt("Cc", address.get(), 1), kVoOutOfRange);
  EXPECT_EQ(header->insertAddressAt("cc", address.release(), 0), kVoSuccess);
  EXPECT_STREQ(header->getHeader("To")->getRawFieldValue(), "x, b, c");
  EXPECT_TRUE(header->isEdited());
  const std::string want = "To: x,\r\n\tb,\r\n\tc\r\nSubject: s\r\ncc: y\r\n\r\n";
  EXPECT_EQ(written(*header), want);

  const std::unique_ptr<VoMsgEntityHeader> copy(header->newCopy());
  EXPECT_TRUE(copy->isEdited());
  EXPECT_EQ(header->setAddressList("To", "z; \"q, r\" <s@t>"), kVoSuccess);
  EXPECT_EQ(header->countAddress("To"), 2u);
  EXPECT_EQ(written(*header), "To: z,\r\n\t\"q, r\" <s@t>\r\nSubject: s\r\ncc: y\r\n\r\n");
  EXPECT_EQ(written(*copy), want);

  // A field changed or added by itself takes its addresses along.
  header->getHeader("To")->setFieldValue("u, v", "us-ascii", nullptr);
  EXPECT_EQ(header->refreshAddressList("To"), kVoSuccess);
  EXPECT_STREQ(header->getAddressAt("To", 1)->getRawAddress(), "v");
  header->getHeader("To")->setFieldValue("k, l", "us-ascii", nullptr);
  EXPECT_EQ(header->removeAddressAt("To", 0), kVoSuccess);
  EXPECT_STREQ(header->getHeader("To")->getRawFieldValue(), "l");
  EXPECT_EQ(header->appendHeader(new VoMsgHeaderField("To", "w")), kVoSuccess);
  EXPECT_EQ(header->countAddress("To"), 2u);
  EXPECT_EQ(header->removeHeaderAt(0), kVoSuccess);
  EXPECT_EQ(header->countAddress("To"), 1u);
  EXPECT_EQ(header->removeHeader("To"), kVoSuccess);
  EXPECT_EQ(header->countAddress("To"), 0u);
  EXPECT_EQ(written(*header), "Subject: s\r\ncc: y\r\n\r\n");
}

TEST(EntityHeader, LosesNoAddressThatTheLimitLeftUncut) {
  const KeepOptions keep;
  MaxHeaderAddress = 2;
  VoMsgEntityHeader header;
  EXPECT_EQ(header.setAddressList("To", "a, b, c, d, e"), kVoSuccess);
  EXPECT_EQ(header.countAddress("To"), 3u);
  EXPECT_EQ(written(header), "To: a, b, c, d, e\r\n\r\n");
  EXPECT_EQ(header.removeAddressAt("To", 1), kVoSuccess);
  EXPECT_STREQ(header.getHeader("To")->getRawFieldValue(), "a, c,  d, e");
}

TEST(EntityHeader, CopiesABlockThatNeedNotBeWrittenAnew) {
  VoMsgEntityHeader header;
  EXPECT_EQ(header.parseHeaderPart(nullptr, nullptr, nullptr), kVoReadFailed);
  for (const std::string block : {"A:b\n\tc\r\r", "A:b\n\tc\nno colon\r\r"}) {
    ExactMemoryReader source("xx" + block + "rest");
    ASSERT_TRUE(source.seek(2));
    VoMsgEntityHeader parsed;
    ASSERT_EQ(parsed.parseHeaderPart(&source, nullptr, nullptr), kVoSuccess);
    vomsg::test::LimitedWriter out;
    EXPECT_EQ(parsed.writeHeaderPart(&source, &out), kVoSuccess);
    EXPECT_EQ(parsed.writeHeaderPart(&source, nullptr), kVoBadArgument);
    EXPECT_TRUE(out.flush());
    EXPECT_EQ(out.text, parsed.isNewHeader() ? "A: bc\r\n\r\n" : block);
  }
  EXPECT_EQ(header.writeHeaderPartFromSource(nullptr, nullptr), kVoBadArgument);
}

}  // namespace
