// An edit that fails has changed nothing: each edit of a table runs with memory that ends after every number of
// allocations. What is refused for other reasons changes nothing either.
#include <gtest/gtest.h>

#include <functional>

#include "tests/edit/EditFixture.h"
#include "tests/edit/FailingMemory.h"
#include "vomsg/entity/VoMsgMimeEntity.h"

namespace vomsg::test {
namespace {

constexpr char kText[] = "Subject: s\r\nContent-Type: text/plain; charset=iso-8859-1\r\n\r\nold\r\n";
constexpr char kBlock[] = "Subject: s\r\n\r\ntext\r\nbegin 644 a\r\n#86)C\r\n`\r\nend\r\n";
constexpr char kParts[] =
    "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: multipart/mixed; boundary=c\r\n\r\n"
    "--c\r\n\r\none\r\n--c--\r\n--b\r\nContent-Type: message/rfc822\r\n\r\nSubject: in\r\n\r\nx\r\n--b--\r\n";
constexpr char kSigned[] =
    "Content-Type: multipart/signed; boundary=b; micalg=x; protocol=y\r\n\r\n--b\r\n\r\none\r\n--b\r\n"
    "Content-Type: application/pgp-signature\r\n\r\nsig\r\n--b\r\nContent-Type: application/pgp-signature\r\n\r\n"
    "sig\r\n--b--\r\n";

struct Edit {
  const char* name;
  const char* message;
  unsigned entity;  // in document order
  std::function<VoErrorCode(VoMsgEntity&, VoMsgResourceLocator*)> run;
  const char* content = "new \xC3\xA4\n--b\r\n--c\r\nline";
};

VoMsgMailMessage& messageAround(VoMsgEntity& part) { return dynamic_cast<VoMsgMailMessage&>(*part.getParentEntity()); }

// A child that was refused stays the caller's.
template <class Make>
VoErrorCode adding(VoMsgEntity& parent, unsigned i, Make&& make) {
  VoMsgEntity* const child = withMemory(make);
  const VoErrorCode code = i > 8 ? parent.appendChildEntity(child) : parent.insertChildEntityAt(child, i);
  if (voFailed(code)) delete child;
  return code;
}
VoMsgEntity* newPart() { return new VoMsgMimeEntity; }

const Edit kEdits[] = {
    {"file name", kText, 0, [](VoMsgEntity& e, VoMsgResourceLocator*) { return e.setFileName("n\xC3\xA4.txt"); }},
    {"content", kBlock, 0, [](VoMsgEntity& e, auto* r) { return e.setContent(r, "image/png", "base64"); }},
    {"quoted content", kParts, 2, [](VoMsgEntity& e, auto* r) { return e.setContent(r, nullptr, "quoted-printable"); }},
    {"raw content", kParts, 2, [](VoMsgEntity& e, auto* r) { return e.setRawContent(r, "text/x", "8bit"); }},
    {"text", kText, 0, [](VoMsgEntity& e, auto* r) { return e.setTextContent(r, nullptr, "utf-8"); }},
    {"other charset", kText, 0, [](VoMsgEntity& e, auto* r) { return e.setTextContent(r, "text/html", "utf-8"); },
     "\xE6\x97\xA5"},
    {"replaced text", kBlock, 0,
     [](VoMsgEntity& e, auto* r) { return e.replaceTextContent(r, "utf-8", kVoReplaceUseCharset); }},
    {"replaced content", kParts, 2, [](VoMsgEntity& e, auto* r) { return e.replaceContent(r, "base64"); }},
    {"attachment", kText, 0, [](VoMsgEntity& e, auto* r) { return e.setAttachment(r); }},
    {"part of a leaf", kBlock, 0, [](VoMsgEntity& e, auto*) { return adding(e, 9, newPart); }},
    {"part in front", kText, 0, [](VoMsgEntity& e, auto*) { return adding(e, 0, newPart); }},
    {"message with the same boundaries", kParts, 1,
     [](VoMsgEntity& e, auto*) { return adding(e, 1, [&]() -> VoMsgEntity* { return messageAround(e).split(); }); }},
    {"removal", kParts, 0, [](VoMsgEntity& e, auto*) { return e.removeChildEntityAt(0); }},
    {"stripping", kSigned, 1, [](VoMsgEntity& e, auto*) { return messageAround(e).stripSignaturePart(); }},
};

TEST(FailedEdit, LeavesTheMessageAsItWas) {
  for (const Edit& edit : kEdits) {
    std::string whole;
    for (long n = -1, isShort = 1; isShort; ++n) {  // first without any failure
      SCOPED_TRACE(edit.name + (" allocation " + std::to_string(n)));
      MessageFixture message(edit.message);
      VoMsgEntity& entity = *entitiesOf(*message)[edit.entity];
      std::string content = edit.content;
      if (edit.message == kSigned) entity.setRawContent(resourceOver(content).get(), nullptr, "8bit");
      const std::string before = written(*message), tree = outline(*message);
      const bool wasModified = message->isModified();
      const auto resource = resourceOver(content);
      bool ranShort = true;
      const VoErrorCode code = withFailingMemory(n, ranShort, [&] { return edit.run(entity, resource.get()); });
      isShort = n < 0 || ranShort;
      ASSERT_TRUE(n >= 0 || !voFailed(code)) << std::hex << code;
      const std::string after = written(*message);
      if (voFailed(code)) {
        ASSERT_EQ(after, before);
        ASSERT_EQ(outline(*message), tree);
        ASSERT_EQ(message->isModified(), wasModified);
        continue;
      }
      if (n < 0) whole = after;
      ASSERT_NE(after, before);
      ASSERT_EQ(after.size(), whole.size()) << after;  // drawn boundaries differ
    }
  }
}

TEST(FailedEdit, WhatIsRefusedIsNoEdit) {
  MessageFixture message(kParts), text(kBlock);
  std::string bytes = "x";
  const auto content = resourceOver(bytes);
  VoMsgEntity& leaf = *entitiesOf(*message)[2];
  const VoMsgHeaderField* const field = text->getHeader("Subject");
  struct Row {
    const char* name;
    VoErrorCode is, want;
  };
  const Row rows[] = {
      {"a multipart has no content", message->setContent(content.get(), nullptr, "base64"), kVoNoContent},
      {"nor does a leaf become one", leaf.setContent(content.get(), "multipart/mixed", "7bit"), kVoNoContent},
      {"unknown encoding", leaf.setContent(content.get(), nullptr, "x-none"), kVoBadEncoding},
      {"no content", leaf.setTextContent(nullptr, nullptr, "utf-8"), kVoBadArgument},
      {"no name", leaf.setFileName(nullptr), kVoBadArgument},
      {"the root in its own descendant", leaf.appendChildEntity(&*message), kVoBadArgument},
      {"an entity in itself", message->appendChildEntity(&*message), kVoBadArgument},
      {"a part of another parent", message->appendChildEntity(&leaf), kVoBadArgument},
      {"too far", message->insertChildEntityAt(&*text, 3), kVoOutOfRange},
      {"no such child", message->removeChildEntityAt(2), kVoOutOfRange},
      {"a leaf has no children", leaf.removeChildEntityAt(0), kVoNoChildren},
      {"a message goes with its part", message->getChildEntityAt(1)->removeChildEntityAt(0), kVoOutOfRange},
      {"blocks go with their text", text->removeChildEntityAt(0), kVoOutOfRange},
  };
  for (const Row& row : rows) EXPECT_EQ(row.is, row.want) << row.name;
  EXPECT_FALSE(message->isModified() || text->isModified());
  EXPECT_EQ(written(*message) + written(*text), std::string(kParts) + kBlock);
  EXPECT_EQ(text->getHeader("Subject"), field);
  MessageFixture empty("Content-Type: multipart/mixed; boundary=b\r\n\r\n--b--\r\n");
  EXPECT_EQ(empty->removeChildEntityAt(0), kVoOutOfRange);
}

}  // namespace
}  // namespace vomsg::test
