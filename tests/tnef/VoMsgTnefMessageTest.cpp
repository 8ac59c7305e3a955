#include "vomsg/tnef/VoMsgTnefMessage.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <map>

#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"
#include "tests/tnef/StreamBuilder.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/tnef/VoMsgMapiAttachment.h"
#include "vomsg/tnef/VoMsgTnefBody.h"

namespace vomsg::test {
namespace {

// One entity a line: level by indent, type id, content type, encoding, charset, file name, size, content or its code.
std::string treeOf(VoMsgEntity& root) {
  std::string tree;
  VoMsgEntityIterator walk(&root);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) {
    for (VoMsgEntity* up = entity; up != &root; up = up->getParentEntity()) tree += ' ';
    char line[200];
    const auto text = [](const char* value) { return value ? value : "-"; };
    std::snprintf(line, sizeof line, "%x %s %s %s %s %u ", entity->getEntityTypeID(), text(entity->getContentType()),
                  text(entity->getEncoding()), text(entity->getCharset()), text(entity->getFileName("utf-8")),
                  entity->getContentSize());
    tree += line + contentOf(entity) + "\n";
  }
  return tree;
}

const std::string kRtf = le32(21) + le32(7) + "LZFu" + le32(0) +
                         std::string(
                             "\x04"
                             "ab\0\x04....",
                             9);

struct Row {
  const char* name;
  std::string bytes;
  VoErrorCode code;
  std::string tree;
};

const Row kRows[] = {
    {"signature and key alone", stream(""), kVoSuccess, "20000006 application/ms-tnef binary - - 0 81011006\n"},
    {"signature alone", le32(kVoTnefSignature), kVoSuccess, "20000006 application/ms-tnef binary - - 0 81011006\n"},
    {"one attachment", stream(attachment("a.txt", "data")), kVoSuccess,
     "20000006 application/ms-tnef binary - - 0 81011006\n"
     " 5 application/octet-stream binary - a.txt 4 data\n"},
    {"properties name it better",
     stream(record(0x9007, le32(1251) + le32(0), 1) +
            attachment("a~1.txt", "data",
                       {text8(0x3001, "title"), text8(0x3704, "short.txt"), text8(0x3707, "l\xEF.txt"),
                        text8(0x370E, "text/x-test")})),
     kVoSuccess,
     "20000006 application/ms-tnef binary Windows-1251 - 0 81011006\n"
     " 5 text/x-test binary Windows-1251 l\xD0\xBF.txt 4 data\n"},
    {"an empty long name, a wide short one",
     stream(attachment("", "", {text8(0x3707, ""), counted(0x001F, 0x3704, {prefixed(wide("w.txt"))})}) +
            attachment("", "", {text8(0x3001, "title")})),
     kVoSuccess,
     "20000006 application/ms-tnef binary - - 0 81011006\n"
     " 5 application/octet-stream binary - w.txt 0 81011006\n"
     " 5 application/octet-stream binary - - 0 81011006\n"},
    {"bodies",
     stream(record(0x9007, le32(0xFFFFFFFF), 1) + record(0x800C, "plain\0", 1) +
            record(0x9003, list({text8(0x1000, "text"), counted(0x0102, 0x1009, {prefixed(kRtf)})}), 1) +
            record(0x9007, le32(1251), 1)),
     kVoSuccess,
     "20000006 application/ms-tnef binary us-ascii - 0 81011006\n"
     " 5 application/octet-stream binary us-ascii - 5 plain\n"
     " 5 text/plain 8bit us-ascii - 5 " +
         std::string("text\0", 5) +
         "\n"
         " 5 text/rtf 8bit Windows-1251 - 8 ab{\\rtf1\n"},
    {"empty texts are no children", stream(record(0x9003, list({counted(0x001E, 0x1000, {le32(0)})}))), kVoSuccess,
     "20000006 application/ms-tnef binary - - 0 81011006\n"},
    {"data in a property",
     stream(record(0x9002, "") + record(0x9005, list({counted(0x0102, 0x3701, {prefixed("bytes")})})) +
            record(0x9002, "") + record(0x9005, list({object(0x3701, "object")}))),
     kVoSuccess,
     "20000006 application/ms-tnef binary - - 0 81011006\n"
     " 5 application/octet-stream binary - - 5 bytes\n"
     " 5 application/octet-stream binary - - 6 object\n"},
    {"a stream inside",
     stream(record(0x9002, "") +
            record(0x9005, list({object(0x3701, stream(attachment("in.txt", "inner"), 7)), text8(0x3707, "x.msg")})) +
            attachment("b.txt", "b")),
     kVoSuccess,
     "20000006 application/ms-tnef binary - - 0 81011006\n"
     " 5 application/octet-stream binary - - 0 81011006\n"
     " 40000005 application/ms-tnef binary - x.msg 0 81011006\n"
     "  20000006 application/ms-tnef binary - - 0 81011006\n"
     "   5 application/octet-stream binary - in.txt 5 inner\n"
     " 5 application/octet-stream binary - b.txt 1 b\n"},
    {"several children of one list: the last owns it",
     stream(record(0x9003,
                   list({text8(0x1000, "A"), object(0x3701, stream("")), text8(0x1000, "B"), text8(0x3707, "name")})) +
            record(0x9005, list({text8(0x3707, "name")}))),
     kVoSuccess,
     "20000006 application/ms-tnef binary - - 0 81011006\n"
     " 5 text/plain 8bit - - 2 " +
         std::string("A\0", 2) +
         "\n"
         " 40000005 application/ms-tnef binary - - 0 81011006\n"
         "  20000006 application/ms-tnef binary - - 0 81011006\n"
         " 5 text/plain 8bit - name 2 " +
         std::string("B\0", 2) + "\n"},
    {"no stream",
     "y\x9F\x3E\x22"
     "anything",
     kVoBadFormat, "20000006 application/ms-tnef binary - - 0 81011006\n"},
    {"too short for one", "\x78\x9F\x3E", kVoBadFormat, "20000006 application/ms-tnef binary - - 0 81011006\n"},
    {"one byte behind the last record", stream(attachment("a", "A")) + "\n", kVoSuccess,
     "20000006 application/ms-tnef binary - - 0 81011006\n"
     " 5 application/octet-stream binary - a 1 A\n"},
    {"a record beyond the end",
     stream(attachment("a", "A") + record(0x9002, "") + "\2" + le16(0x800F) + le16(6) + le32(50) + "cut"),
     kVoReadFailed,
     "20000006 application/ms-tnef binary - - 0 81011006\n"
     " 5 application/octet-stream binary - a 1 A\n"
     " 5 application/octet-stream binary - - 50 8101100A\n"},
    {"an opening record beyond the end opens nothing",
     stream(attachment("a", "A") + "\2" + le16(0x9002) + le16(6) + le32(50)), kVoReadFailed,
     "20000006 application/ms-tnef binary - - 0 81011006\n"
     " 5 application/octet-stream binary - a 1 A\n"},
    {"a fault inside is a fault outside",
     stream(record(0x9003, list({text8(0x1000, "A"), object(0x3701, stream(attachment("in", "I") + "\2" + le16(0x800F) +
                                                                           le16(6) + le32(99)))})) +
            attachment("b", "B")),
     kVoReadFailed,
     "20000006 application/ms-tnef binary - - 0 81011006\n"
     " 5 text/plain 8bit - - 2 " +
         std::string("A\0", 2) +
         "\n"
         " 40000005 application/ms-tnef binary - - 0 81011006\n"
         "  20000006 application/ms-tnef binary - - 0 81011006\n"
         "   5 application/octet-stream binary - in 1 I\n"},
};

TEST(TnefMessage, ReadsStreamsAndWritesThemBack) {
  const ScratchDirectory scratch;
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    ReadMessage memory(row.bytes);
    EXPECT_EQ(codeText(memory.code), codeText(row.code));
    EXPECT_EQ(treeOf(memory.message), row.tree);
    EXPECT_EQ(written(memory.message), row.bytes);
    EXPECT_FALSE(memory.message.isModified());
    const std::unique_ptr<VoMsgMailMessage> copied(memory.message.split());
    ASSERT_TRUE(copied);
    EXPECT_EQ(treeOf(*copied), row.tree);
    EXPECT_EQ(written(*copied), row.bytes);

    const std::string path = scratch.path + "/winmail.dat";
    writeFile(path, row.bytes);
    VoMsgTnefMessage file;
    EXPECT_EQ(codeText(file.readFrom(new VoMsgFileResource(path.c_str(), nullptr, nullptr))), codeText(row.code));
    EXPECT_EQ(treeOf(file), row.tree);
    EXPECT_EQ(written(file), row.bytes);
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
  std::string bytes = stream(attachment("deepest", "D"));
  for (int i = 0; i < 25; ++i) bytes = stream(record(0x9005, list({object(0x3701, bytes)})));
  ReadMessage read(bytes);
  ASSERT_EQ(read.code, kVoSuccess);
  int nested = 0;
  VoMsgEntity* entity = &read.message;
  while (entity->getChildEntity()) {
    entity = entity->getChildEntity();
    nested += entity->getEntityTypeID() == kVoEntityTnefMessage;
  }
  EXPECT_EQ(nested, VoMsgMailMessage::getMaxExtractLevel() + 1);
  EXPECT_EQ(entity->getNestingLevel(), static_cast<unsigned>(VoMsgMailMessage::getMaxExtractLevel()));
  const auto holdsMessage = [](VoMsgEntity* owner) {
    return dynamic_cast<VoMsgTnefEntity*>(owner)->_getTnefBody()->_getAttachment()->hasAttachedTnefMessage();
  };
  EXPECT_TRUE(holdsMessage(read.child(0)));
  EXPECT_FALSE(holdsMessage(entity)) << "below the limit it is an object like any other";
  EXPECT_EQ(written(read.message), bytes);
}

TEST(TnefMessage, AnswersWithACode) {
  RememberingLog log;
  VoMsgTnefMessage message;
  EXPECT_EQ(message.readFrom(nullptr), kVoBadArgument);
  EXPECT_EQ(message.writeTo(nullptr), kVoBadArgument);
  VoMsgMemoryResource target(0, nullptr, nullptr);
  EXPECT_EQ(message.writeTo(&target), kVoReadFailed);
  EXPECT_EQ(message.readFrom(new VoMsgFileResource("/nonexistent/winmail.dat", nullptr, nullptr)), kVoReadFailed);
  EXPECT_EQ(message.readMailHeaderFrom(&target), kVoNotSupported);
  EXPECT_EQ(message.readMailBodyFrom(&target), kVoNotSupported);
  EXPECT_EQ(message.insertDisclaimerMessage(kVoDisclaimerTop, &target, 0, "utf-8", nullptr), kVoDisclaimerRefused);

  ReadMessage read(stream(attachment("a", "A")));
  auto second = resourceOf("x");
  EXPECT_EQ(read.message.readFrom(second.get()), kVoNoMemory);
  VoMsgMemoryResource own(read.block.get(), static_cast<unsigned>(stream(attachment("a", "A")).size()), nullptr,
                          nullptr);
  EXPECT_EQ(read.message.writeTo(&own), kVoBadArgument);
  VoMsgFileResource nowhere("/nonexistent/out", nullptr, nullptr);
  EXPECT_EQ(read.message.writeTo(&nowhere), kVoWriteFailed);
  EXPECT_EQ(read.message._getTnefKey(), 0x1234);
  EXPECT_EQ(log.count("Resource of this message object has already existed."), 1);
  EXPECT_EQ(log.count("The argument of ResourceLocator is same as message source file."), 1);
  const ScratchDirectory scratch;
  writeFile(scratch.path + "/a", stream(""));
  std::filesystem::create_hard_link(scratch.path + "/a", scratch.path + "/b");
  VoMsgTnefMessage linked;
  EXPECT_EQ(linked.readFrom(new VoMsgFileResource((scratch.path + "/a").c_str(), nullptr, nullptr)), kVoSuccess);
  VoMsgFileResource other((scratch.path + "/b").c_str(), nullptr, nullptr);
  EXPECT_EQ(linked.writeTo(&other), kVoBadArgument);
  EXPECT_EQ(readFile(scratch.path + "/a"), stream(""));
  std::filesystem::resize_file(scratch.path + "/a", (std::uint64_t{1} << 32) + 6);
  VoMsgTnefMessage large;
  EXPECT_EQ(large.readFrom(new VoMsgFileResource((scratch.path + "/a").c_str(), nullptr, nullptr)), kVoReadFailed);
  // Each failure above has left its line.
  const std::map<std::string, int> want = {{"readFrom", 4}, {"writeTo", 5}, {"_parse", 4}};
  for (const auto& [func, count] : want) {
    int lines = 0;
    for (const auto& line : log.debug) lines += line.file == "VoMsgTnefMessage" && line.func == func;
    EXPECT_EQ(lines, count) << func;
  }
}

TEST(TnefMessage, HasNoHeaderFields) {
  ReadMessage read(stream(attachment("a", "A")));
  for (VoMsgEntity* entity : {static_cast<VoMsgEntity*>(&read.message), static_cast<VoMsgEntity*>(read.child(0))}) {
    EXPECT_EQ(entity->countHeaders(), 0u);
    EXPECT_EQ(entity->getHeader("Subject"), nullptr);
    EXPECT_EQ(entity->getHeaderValue("Subject", "utf-8"), nullptr);
    EXPECT_TRUE(voFailed(entity->setHeaderValue("Subject", "x", "utf-8", nullptr)));
    EXPECT_TRUE(voFailed(entity->appendChildEntity(&read.message)));
    EXPECT_FALSE(entity->_isModified());
  }
}

TEST(TnefMessage, WrapsItselfInAMimeEntity) {
  auto* const message = new VoMsgTnefMessage;
  message->readFrom(resourceOf(stream(attachment("a", "A"))).release());
  const std::unique_ptr<VoMsgEntity> wrapper(message->createWrapperEntity());
  ASSERT_TRUE(wrapper);
  EXPECT_STREQ(wrapper->getContentType(), "application/ms-tnef");
  EXPECT_STREQ(wrapper->getEncoding(), "base64");
  EXPECT_EQ(wrapper->getChildEntity(), message);
  EXPECT_TRUE(message->isModified());
  EXPECT_EQ(message->createWrapperEntity(), nullptr) << "it is in a tree already";
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
