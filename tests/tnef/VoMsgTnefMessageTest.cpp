#include "vomsg/tnef/VoMsgTnefMessage.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>

#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"
#include "tests/support/WindowStreams.h"
#include "tests/tnef/HostileStreams.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/tnef/VoMsgMapiAttachment.h"
#include "vomsg/tnef/VoMsgTnefAttachData.h"
#include "vomsg/tnef/VoMsgTnefBody.h"

namespace vomsg::test {
namespace {

// The entities below the root, one a line: level by indent, type id, content type, encoding, charset, file name, size,
// content or its code.
std::string treeOf(VoMsgEntity& root) {
  std::string tree;
  for (VoMsgEntity* entity : entitiesOf(root)) {
    if (entity == &root) continue;
    for (VoMsgEntity* up = entity->getParentEntity(); up != &root; up = up->getParentEntity()) tree += ' ';
    char line[200];
    const auto text = [](const char* value) { return value ? value : "-"; };
    std::snprintf(line, sizeof line, "%x %s %s %s %s %u ", entity->getEntityTypeID(), text(entity->getContentType()),
                  text(entity->getEncoding()), text(entity->getCharset()), text(entity->getFileName("utf-8")),
                  entity->getContentSize());
    tree += line + contentOf(entity) + "\n";
  }
  return tree;
}

// Two literals and a reference to the start of the prefix; the size in the header covers four bytes more.
std::string richText(std::uint32_t size, std::uint32_t expandedSize) {
  return le32(size) + le32(expandedSize) + "LZFu" + le32(0) + std::string("\4yz\0\4....", 9);
}
std::string richBody(const std::string& data) { return counted(0x0102, 0x1009, {prefixed(data)}); }

// The head of a record that claims more than the stream holds.
std::string claim(unsigned nameId, std::uint32_t length) { return "\2" + le16(nameId) + le16(6) + le32(length); }

struct Row {
  const char* name;
  std::string bytes;
  VoErrorCode code;
  std::string tree;
};

const std::string kFileA = "5 application/octet-stream binary - a 1 A\n";
const std::string kBodyA = "5 text/plain 8bit - - 2 " + std::string("A\0\n", 3);

const Row kRows[] = {
    {"signature and key alone", stream(""), kVoSuccess, ""},
    {"signature alone", le32(kVoTnefSignature), kVoSuccess, ""},
    {"one attachment", stream(attachment("a.txt", "data")), kVoSuccess,
     "5 application/octet-stream binary - a.txt 4 data\n"},
    {"properties name it better",
     stream(record(0x9007, le32(1251) + le32(0), 1) +
            attachment("a~1.txt", "data",
                       {text8(0x3001, "title"), text8(0x3704, "short.txt"), text8(0x3707, "l\xEF.txt"),
                        text8(0x370E, "text/x-test")})),
     kVoSuccess, "5 text/x-test binary Windows-1251 l\xD0\xBF.txt 4 data\n"},
    {"an empty long name, a wide short one",
     stream(attachment("", "", {text8(0x3707, ""), counted(0x001F, 0x3704, {prefixed(wide("w.txt"))})}) +
            attachment("", "", {text8(0x3001, "title")})),
     kVoSuccess,
     "5 application/octet-stream binary - w.txt 0 81011006\n5 application/octet-stream binary - - 0 81011006\n"},
    {"bodies",
     stream(record(0x9007, le32(0xFFFFFFFF), 1) + record(0x800C, "plain\0", 1) +
            record(0x9003, list({text8(0x1000, "A"), richBody(richText(21, 7))}), 1) + record(0x9007, le32(1251), 1)),
     kVoSuccess,
     "5 application/octet-stream binary us-ascii - 5 plain\n5 text/plain 8bit us-ascii - 2 " + std::string("A\0", 2) +
         "\n5 text/rtf 8bit Windows-1251 - 8 yz{\\rtf1\n"},
    {"rich texts that lie",
     stream(record(0x9003, list({richBody(richText(0xFFFFFFFF, 0xFFFFFFFF)), richBody("short")}), 1)), kVoSuccess,
     "5 text/rtf 8bit - - 12 yz{\\rtf1....\n5 text/rtf 8bit - - 0 \n"},
    {"empty texts are no children", stream(record(0x9003, list({counted(0x001E, 0x1000, {le32(0)})}))), kVoSuccess, ""},
    {"data in a property",
     stream(record(0x9002, "") + record(0x9005, list({counted(0x0102, 0x3701, {prefixed("bytes")})})) +
            record(0x9002, "") + record(0x9005, list({object(0x3701, "object")}))),
     kVoSuccess, "5 application/octet-stream binary - - 5 bytes\n5 application/octet-stream binary - - 6 object\n"},
    {"a stream inside",
     stream(record(0x9002, "") +
            record(0x9005, list({object(0x3701, stream(attachment("a", "A"), 7)), text8(0x3707, "x.msg")})) +
            attachment("a", "A")),
     kVoSuccess,
     "5 application/octet-stream binary - - 0 81011006\n"
     "40000005 application/ms-tnef binary - x.msg 0 81011006\n"
     " 20000006 application/ms-tnef binary - - 0 81011006\n  " +
         kFileA + kFileA},
    {"an object of 20 bytes is a stream when its last four are the signature, one of 19 never",
     stream(record(0x9002, "") + record(0x9005, list({object(0x3701, le32(kVoTnefSignature))})) + record(0x9002, "") +
            record(0x9005, list({object(0x3701, le32(kVoTnefSignature).substr(0, 3))}))),
     kVoSuccess,
     "5 application/octet-stream binary - - 0 81011006\n"
     "40000005 application/ms-tnef binary - - 0 81011006\n"
     " 20000006 application/ms-tnef binary - - 0 81011006\n"
     "5 application/octet-stream binary - - 3 \x78\x9F\x3E\n"},
    {"several children of one list: the last owns it",
     stream(record(0x9003,
                   list({text8(0x1000, "A"), object(0x3701, stream("")), text8(0x1000, "B"), text8(0x3707, "name")})) +
            record(0x9005, list({text8(0x3707, "name")}))),
     kVoSuccess,
     kBodyA +
         "40000005 application/ms-tnef binary - - 0 81011006\n"
         " 20000006 application/ms-tnef binary - - 0 81011006\n"
         "5 text/plain 8bit - name 2 " +
         std::string("B\0\n", 3)},
    {"no stream", "y\x9F>\"anything", kVoBadFormat, ""},
    {"too short for one", "\x78\x9F\x3E", kVoBadFormat, ""},
    {"one byte behind the last record", stream(attachment("a", "A")) + "\n", kVoSuccess, kFileA},
    {"a record beyond the end", stream(attachment("a", "A") + record(0x9002, "") + claim(0x800F, 50) + "cut"),
     kVoReadFailed, kFileA + "5 application/octet-stream binary - - 50 8101100A\n"},
    {"an opening record beyond the end opens nothing", stream(attachment("a", "A") + claim(0x9002, 50)), kVoReadFailed,
     kFileA},
    {"a list that cannot be read on",
     stream(record(0x9002, "") +
            record(0x9005, list({text8(0x3704, "s.txt"), property(0x0001, 1, "abcd"), text8(0x3707, "l.txt")}))),
     kVoTnefMalformed, "5 application/octet-stream binary - s.txt 0 81011006\n"},
    {"a fault inside is a fault outside",
     stream(
         record(0x9003, list({text8(0x1000, "A"), object(0x3701, stream(attachment("a", "A") + claim(0x800F, 99)))})) +
         attachment("b", "B")),
     kVoReadFailed,
     kBodyA +
         "40000005 application/ms-tnef binary - - 0 81011006\n"
         " 20000006 application/ms-tnef binary - - 0 81011006\n  " +
         kFileA},
};

TEST(TnefMessage, ReadsStreamsAndWritesThemBack) {
  const ScratchDirectory scratch;
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    VoMsgTnefMessage file;
    const std::string path = scratch.write("winmail.dat", row.bytes);
    EXPECT_EQ(codeText(file.readFrom(new VoMsgFileResource(path.c_str(), nullptr, nullptr))), codeText(row.code));
    ReadMessage memory(row.bytes);
    EXPECT_EQ(codeText(memory.code), codeText(row.code));
    EXPECT_STREQ(memory.message.getContentType(), "application/ms-tnef");
    EXPECT_EQ(contentOf(&memory.message), codeText(kVoNoContent));
    const std::unique_ptr<VoMsgMailMessage> copied(memory.message.split());
    for (VoMsgMailMessage* each :
         {static_cast<VoMsgMailMessage*>(&file), static_cast<VoMsgMailMessage*>(&memory.message), copied.get()}) {
      EXPECT_EQ(treeOf(*each), row.tree);
      EXPECT_EQ(written(*each), row.bytes);
      EXPECT_FALSE(each->isModified());
    }
  }
}

// What is taken into memory may claim as much as the whole stream has, what is kept by reference no more than is left;
// in the parse of a stream and in the reading of a single record.
TEST(TnefMessage, RecordsLongerThanWhatIsLeft) {
  const struct {
    unsigned nameId;
    std::uint32_t longest;
  } rows[] = {{0x8010, 6 + 9 + 4}, {0x9007, 6 + 9 + 4}, {0x1234, 4}, {0x800F, 4}, {0x800C, 4}};
  for (const auto& [nameId, longest] : rows) {
    for (const std::uint32_t more : {0u, 1u, 0xFFFFFFFFu - longest}) {
      SCOPED_TRACE(codeText(nameId) + " and " + std::to_string(more));
      const VoErrorCode code = more == 0 ? kVoSuccess : kVoReadFailed;
      const std::string bytes = stream(claim(nameId, longest + more) + "data");
      ReadMessage read(bytes);
      EXPECT_EQ(codeText(read.code), codeText(code));
      EXPECT_EQ(written(read.message), bytes);
      ExactReader exact(bytes);
      exact.reader.rseek(11, 0);
      VoMsgTnefAttribute inMemory(2, 6, static_cast<std::uint16_t>(nameId));
      VoMsgTnefAttachData byReference(2, 6, static_cast<std::uint16_t>(nameId));
      VoMsgTnefAttribute& one = longest > 4 ? inMemory : byReference;
      int result = 0;
      EXPECT_EQ(one.readData(result, nullptr, &exact.reader), nullptr);
      EXPECT_EQ(codeText(static_cast<VoErrorCode>(result)), codeText(code));
      EXPECT_TRUE(more > 0 || one.getDataSize() == longest);
    }
  }
}

TEST(TnefMessage, StopsAtALimit) {
  const std::string first = attachment("a", "A");
  const std::string bytes = stream(first + attachment("b", "B"));
  // At exactly the end of the first attachment no more record begins; a byte later one does, and opens a child.
  for (const unsigned more : {0u, 1u}) {
    ReadMessage read(bytes);
    EXPECT_EQ(read.message._parse(static_cast<unsigned>(6 + first.size()) + more), kVoSuccess);
    EXPECT_EQ(read.message.countChildEntity(), 1 + more);
    EXPECT_EQ(written(read.message), bytes);
  }
}

TEST(TnefMessage, NestsToTheLimitAndNotBeyond) {
  // In a stream of its own the outermost message does not count as a level.
  const std::string bytes = nestedStreams(25, attachment("deepest", "D"));
  RememberingLog log;
  ReadMessage read(bytes);
  EXPECT_EQ(log.count("begin: _parse"), VoMsgMailMessage::getMaxExtractLevel() + 2);
  EXPECT_EQ(log.count("end  : _parse"), VoMsgMailMessage::getMaxExtractLevel() + 2);
  ASSERT_EQ(read.code, kVoSuccess);
  VoMsgEntity* entity = &read.message;
  while (entity->getChildEntity()) entity = entity->getChildEntity();
  EXPECT_EQ(entity->getNestingLevel(), static_cast<unsigned>(VoMsgMailMessage::getMaxExtractLevel()));
  const auto holdsMessage = [](VoMsgEntity* owner) {
    return dynamic_cast<VoMsgTnefEntity*>(owner)->_getTnefBody()->_getAttachment()->hasAttachedTnefMessage();
  };
  EXPECT_TRUE(holdsMessage(read.child(0)));
  EXPECT_FALSE(holdsMessage(entity)) << "below the limit it is an object like any other";
  EXPECT_EQ(written(read.message), bytes);
}

TEST(TnefMessage, AnswersWithACodeAndALine) {
  RememberingLog log;
  const ScratchDirectory scratch;
  const auto file = [&](const char* name) {
    return std::make_unique<VoMsgFileResource>(scratch.file(name).c_str(), nullptr, nullptr);
  };
  VoMsgMemoryResource target(0, nullptr, nullptr);
  VoMsgTnefMessage message;
  EXPECT_EQ(message.readFrom(nullptr), kVoBadArgument);
  EXPECT_EQ(message.writeTo(nullptr), kVoBadArgument);
  EXPECT_EQ(message.writeTo(&target), kVoReadFailed);
  EXPECT_EQ(message._parse(0), kVoReadFailed);
  EXPECT_EQ(message.readFrom(file("missing").release()), kVoReadFailed);
  EXPECT_EQ(message.readMailBodyFrom(&target), kVoNotSupported);
  EXPECT_EQ(message.insertDisclaimerMessage(kVoDisclaimerTop, &target, 0, "utf-8", nullptr), kVoDisclaimerRefused);

  scratch.write("a", stream(""));
  std::filesystem::create_hard_link(scratch.file("a"), scratch.file("b"));
  VoMsgTnefMessage read;
  EXPECT_EQ(read.readFrom(file("a").release()), kVoSuccess);
  EXPECT_EQ(read._getTnefKey(), 0x1234);
  EXPECT_EQ(read.readFrom(&target), kVoNoMemory);
  EXPECT_EQ(read.writeTo(file("a").get()), kVoBadArgument);
  EXPECT_EQ(read.writeTo(file("b").get()), kVoBadArgument);
  EXPECT_EQ(read.writeTo(file("no folder/c").get()), kVoWriteFailed);
  EXPECT_EQ(readFile(scratch.file("a")), stream(""));
  std::filesystem::resize_file(scratch.file("a"), (std::uint64_t{1} << 32) + 6);
  VoMsgTnefMessage large;
  EXPECT_EQ(large.readFrom(file("a").release()), kVoReadFailed);

  EXPECT_EQ(log.count("Resource of this message object has already existed."), 1);
  std::map<std::string, int> lines;
  for (const auto& line : log.debug)
    if (line.file == "VoMsgTnefMessage") ++lines[line.func];
  EXPECT_EQ(
      lines,
      (std::map<std::string, int>{
          {"readFrom", 4}, {"writeTo", 5}, {"_parse", 4}, {"readMailBodyFrom", 1}, {"insertDisclaimerMessage", 1}}));
}

// Each failed call leaves one line, of records and values too.
TEST(TnefMessage, EveryRefusalLeavesOneLine) {
  ReadMessage read(stream(record(0x9003, list({text8(0x1000, "text")})) +
                          attachment("a", "A", {text8(0x3707, "a"), property(3, 0x3705, "abcd")}) +
                          record(0x9002, "")));
  VoMsgTnefEntity& file = *read.child(1);
  VoMsgMapiAttachment* const properties = file._getTnefBody()->_getAttachment();
  VoMsgMapiProperty* const number = properties->getMapiPropertyAt(1);
  auto* const data = dynamic_cast<VoMsgTnefAttachData*>(file._getTnefBody()->getTnefObjectByNameID(0x800F));
  VoMsgResourceLocator* none = nullptr;
  const VoMsgResourceLocator* target = nullptr;
  VoMsgTnefMessage empty, foreign;
  VoMsgMapiProperty unread;
  unsigned short sum = 0;
  int code = 0;
  LimitedWriter full(0, 1);
  const std::function<void()> refused[] = {
      [&] { file.setContent(nullptr, "a/b", nullptr); },
      [&] { file.setFileName(nullptr); },
      [&] { file.setContentType(nullptr); },
      [&] { read.child(0)->setAttachment(nullptr); },
      [&] { file.removeChildEntityAt(0); },
      [&] { file.setHeaderValue("Subject", "x", "utf-8", nullptr); },
      [&] { read.message.setHeaderValue("Subject", "x", "utf-8", nullptr); },
      [&] { read.message.appendEntity(nullptr); },
      [&] { read.message.removeHeader("Subject"); },
      [&] { read.child(2)->getContent(code, nullptr); },
      [&] { read.child(2)->getTextContent(code, nullptr, "utf-8"); },
      [&] { read.message.getRawContent(code, nullptr); },
      [&] { file.copy(nullptr); },
      [&] { read.message.copy(&empty); },
      [&] { foreign.readMailHeaderFrom(nullptr); },
      [&] { properties->readData(code, nullptr, nullptr); },
      [&] { data->readData(code, &file, nullptr); },
      [&] { unread.readMapiProperty(code, &file, nullptr); },
      [&] { unread.setStringData("x"); },
      [&] { number->setStringData("x"); },
      [&] { number->getRawContent(nullptr, target); },
      [&] { number->writeMapiProperty(nullptr, nullptr, sum); },
      [&] { number->getMapiDataAt(0)->getContent(nullptr, target); },
      [&] { number->getMapiDataAt(0)->writeMapiData(nullptr, nullptr, sum); },
      [&] { data->getContent(nullptr, target); },
      [&] { data->setContent(none); },
      [&] { data->writeData(&full, nullptr); },
      [&] { file._getTnefBody()->appendAttribute(nullptr); },
      [&] { file._getTnefBody()->writeBodyPart(&full, nullptr); },
      [&] { read.child(2)->_getTnefBody()->getRawContent(nullptr, target); },
  };
  RememberingLog log;
  for (std::size_t i = 0; i < std::size(refused); ++i) {
    log.debug.clear();
    refused[i]();
    EXPECT_EQ(log.count("failed. (error code:"), 1) << i;
    EXPECT_EQ(log.debug.size(), 1u) << i;
  }
}

TEST(TnefMessage, WrapsItselfInAMimeEntity) {
  const std::string bytes = stream(attachment("a", "A"));
  auto* const message = new VoMsgTnefMessage;
  message->readFrom(resourceOf(bytes).release());
  std::unique_ptr<VoMsgEntity> wrapper(message->createWrapperEntity());
  ASSERT_TRUE(wrapper);
  EXPECT_STREQ(wrapper->getContentType(), "application/ms-tnef");
  EXPECT_STREQ(wrapper->getEncoding(), "base64");
  EXPECT_EQ(wrapper->getChildEntity(), message);
  EXPECT_TRUE(message->isModified());
  EXPECT_EQ(message->createWrapperEntity(), nullptr) << "it is in a tree already";
  VoMsgRfc822Message mail;
  ASSERT_EQ(mail.appendChildEntity(wrapper.get()), kVoSuccess);
  wrapper.release();
  MessageFixture again(written(mail));
  VoMsgEntity* const deepest = entitiesOf(*again).back();
  EXPECT_STREQ(deepest->getFileName(nullptr), "a");
  EXPECT_EQ(contentOf(deepest->getParentEntity()->getParentEntity()), bytes);
}

TEST(TnefMessage, DumpsEveryEntity) {
  ReadMessage read(stream(record(0x9002, "") + record(0x9005, list({object(0x3701, stream(attachment("a", "A")))}))));
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const out = open_memstream(&text, &size);
  read.message.dumpMessageInf(out);
  read.child(1)->dumpAttachedTnefMessageInf(out);
  std::fclose(out);
  const std::string dump(text, size);
  std::free(text);
  for (const char* wanted : {"(**** VoMsgTnefMessage Attachment ****)", "[ VoMsgTnefMessage ]", "[ VoMsgTnefEntity ]",
                             "BodyType : VoMsgTnefBody\n", "\n    ( VoMsgTnefAttachData )\n",
                             "mNameID           : H'800f", "( VoMsgMapiAttachment )", "mCheckSum"})
    EXPECT_NE(dump.find(wanted), dump.npos) << wanted;
}

}  // namespace
}  // namespace vomsg::test
