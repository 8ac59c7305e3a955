#include <gtest/gtest.h>

#include "tests/support/WindowStreams.h"
#include "tests/tnef/StreamBuilder.h"
#include "vomsg/encoding/VoBase64.h"
#include "vomsg/tnef/VoMsgMapiAttachment.h"
#include "vomsg/tnef/VoMsgTnefBody.h"

namespace vomsg::test {
namespace {

const std::string kRender(14, '\0');
const std::string kNewRender = std::string("\0\0\1", 3) + std::string(11, '\0');

std::string title(const std::string& name) { return record(0x8010, name + std::string(1, '\0'), 2, 1); }

// Everything around the edited records has wrong sums and odd levels, which must come out as they went in.
const std::string kBefore = record(0x9006, "1234", 9, 8, 1) + record(0x7777, "unknown", 5, 5, 3);
const std::string kAfter = record(0x9002, kRender, 2, 6, 7) + record(0x800F, "other", 2, 6, 9) + "\n";

struct Edit {
  const char* name;
  std::string before;        // the records of the first attachment
  const char* resourceName;  // null: none
  const char* contentType;   // null: replaceContent
  std::string after;         // the records when the content has become "NEW"
};

const std::string kUmlaut = counted(0x001F, 0x3707, {prefixed(le16(0xFC) + le16(0))});

const Edit kEdits[] = {
    {"data alone", record(0x9002, kRender, 2, 6, 1) + title("a.txt") + record(0x800F, "old data") + record(0x9999, "x"),
     nullptr, nullptr, record(0x9002, kRender, 2, 6, 1) + title("a.txt") + record(0x800F, "NEW") + record(0x9999, "x")},
    {"equal name and type", attachment("a.txt", "old", {text8(0x370E, "text/x-a")}), "a.txt", "TEXT/x-a",
     attachment("a.txt", "NEW", {text8(0x370E, "text/x-a")})},
    {"new name and type",
     attachment("a.txt", "old", {text8(0x3704, "a~1.txt"), text8(0x370E, "text/x-a"), text8(0x3707, "a.txt")}),
     "b.html", "text/html",
     attachment("b.html", "NEW", {text8(0x3704, "a~1.txt"), text8(0x370E, "text/html"), text8(0x3707, "b.html")})},
    {"a wide name, no type", attachment("a.txt", "old", {counted(0x001F, 0x3707, {prefixed(wide("a.txt"))})}), "b.txt",
     "text/html", attachment("b.txt", "NEW", {counted(0x001F, 0x3707, {prefixed(wide("b.txt"))})})},
    {"the present name, which is not ASCII", attachment("u.txt", "old", {kUmlaut}), "\xC3\xBC", nullptr,
     attachment("u.txt", "NEW", {kUmlaut})},
    {"only a short name", attachment("a.txt", "old", {text8(0x3704, "a.txt")}), "b.txt", nullptr,
     attachment("b.txt", "NEW", {text8(0x3704, "b.txt")})},
    {"neither title nor data", record(0x9002, kRender), "new.txt", "text/plain",
     record(0x9002, kRender) + title("new.txt") + record(0x800F, "NEW")},
    {"data in a property", record(0x9002, kRender) + record(0x9005, list({counted(0x0102, 0x3701, {prefixed("old")})})),
     nullptr, nullptr, record(0x9002, kRender) + record(0x9005, list({counted(0x0102, 0x3701, {prefixed("NEW")})}))},
    {"an object", record(0x9002, kRender) + record(0x9005, list({object(0x3701, "old")})), nullptr, nullptr,
     record(0x9002, kRender) + record(0x9005, list({object(0x3701, "NEW")}))},
    {"a body", record(0x800C, "old text", 1, 2), nullptr, nullptr, record(0x800C, "NEW", 1, 2)},
};

TEST(TnefEdit, ChangesTheRecordsOfOneAttachmentAlone) {
  // The second tail cannot be read, and follows the records all the same.
  for (int i = 0; i < 2 * static_cast<int>(std::size(kEdits)); ++i) {
    const Edit& edit = kEdits[i / 2];
    const std::string tail = i % 2 ? "\x7F tail" : "";
    SCOPED_TRACE(edit.name + tail);
    const std::string want = stream(kBefore + edit.after + kAfter + tail);
    ReadMessage read(stream(kBefore + edit.before + kAfter + tail));
    ASSERT_EQ(voFailed(read.code), i % 2 == 1);
    VoMsgTnefEntity* const child = read.child(0);
    const auto content = resourceOf("NEW", edit.resourceName);
    EXPECT_EQ(edit.contentType ? child->setContent(content.get(), edit.contentType, "base64")
                               : child->replaceContent(content.get(), nullptr),
              kVoSuccess);
    EXPECT_EQ(contentOf(child), "NEW");
    if (edit.resourceName) {
      EXPECT_STREQ(child->getFileName(nullptr), edit.resourceName);
    }
    EXPECT_TRUE(read.message.isModified());
    EXPECT_EQ(written(read.message), want);
    EXPECT_EQ(written(read.message), want) << "a second time";
    const std::unique_ptr<VoMsgMailMessage> copied(read.message.split());
    EXPECT_EQ(written(*copied), want);
    EXPECT_TRUE(copied->isModified());

    ReadMessage again(want);
    EXPECT_EQ(contentOf(again.child(0)), "NEW");
    EXPECT_EQ(again.message.countChildEntity(), 2u);
  }
}

TEST(TnefEdit, RefusesAndChangesNothing) {
  const std::string bytes = stream(
      record(0x9003,
             list({text8(0x1000, "text"), counted(0x0102, 0x1009, {prefixed("rtf")}), object(0x3701, stream(""))})) +
      attachment("a", "A"));
  ReadMessage read(bytes);
  const auto content = resourceOf("x", "name");
  VoMsgResourceLocator* const x = content.get();
  VoMsgTnefEntity* const text = read.child(0);
  VoMsgTnefEntity* const rtf = read.child(1);
  VoMsgTnefEntity* const file = read.child(3);
  VoMsgTnefEntity loose(VoMsgTnefEntity::kRecord);
  struct Row {
    VoMsgTnefEntity* entity;
    VoMsgResourceLocator* content;
    const char* type;
    const char* encoding;
    VoErrorCode set;
    VoErrorCode replaced;  // success: not asked
  };
  const Row rows[] = {
      {file, nullptr, "a/b", nullptr, kVoBadArgument, kVoBadArgument},
      {file, x, nullptr, nullptr, kVoBadArgument, kVoSuccess},
      {file, x, "a/b", "Quoted-Printable", kVoNotSupported, kVoNotSupported},
      {text, x, "a/b", nullptr, kVoBadEncoding, kVoBadEncoding},
      {rtf, x, "a/b", nullptr, kVoBadEncoding, kVoBadEncoding},
      {rtf, nullptr, "a/b", nullptr, kVoBadArgument, kVoBadEncoding},
      {rtf, x, "a/b", "quoted-printable", kVoNotSupported, kVoBadEncoding},
      {read.child(2), x, "a/b", nullptr, kVoNoContent, kVoBadEncoding},  // it holds a stream
      {&read.message, x, "a/b", nullptr, kVoNoContent, kVoNoContent},
      {&loose, x, "a/b", nullptr, kVoNoContent, kVoNoContent},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(codeText(row.entity->setContent(row.content, row.type, row.encoding)), codeText(row.set));
    if (row.replaced == kVoSuccess) continue;
    EXPECT_EQ(codeText(row.entity->replaceContent(row.content, row.encoding)), codeText(row.replaced));
  }
  EXPECT_EQ(text->setFileName("x"), kVoBadEncoding);
  EXPECT_EQ(loose._createTnefRenderAttrib(), kVoNoContent);
  EXPECT_EQ(file->setFileName(nullptr), kVoBadArgument);
  EXPECT_FALSE(read.message.isModified());
  EXPECT_EQ(written(read.message), bytes);
}

TEST(TnefEdit, MakesARenderingRecordWhereThereIsNone) {
  ReadMessage read(stream(record(0x800C, "text")));
  EXPECT_EQ(read.child(0)->_createTnefRenderAttrib(), kVoSuccess);
  EXPECT_EQ(read.child(0)->_createTnefRenderAttrib(), kVoSuccess);
  EXPECT_EQ(written(read.message), stream(record(0x800C, "text") + record(0x9002, kNewRender)));
}

TEST(TnefEdit, WritesAStreamInsideAStream) {
  const auto deep = [](const std::string& content) {
    const std::string inner = stream(kBefore + attachment("in.txt", content) + "\n", 3);
    const std::string middle = stream(record(0x9005, list({text8(0x1000, "t"), object(0x3701, inner)})) + kAfter, 2);
    return stream(record(0x9002, kRender, 2, 6, 1) +
                      record(0x9005, list({object(0x3701, middle), text8(0x1000, "u"), object(0x3702, stream(""))})) +
                      kAfter,
                  1);
  };
  for (const std::string& content : {std::string("x"), std::string(70000, 'y'), std::string()}) {
    ReadMessage read(deep("old"));
    ASSERT_FALSE(voFailed(read.code));
    VoMsgEntity* const leaf = read.child(1)->getChildEntity()->getChildEntityAt(1)->getChildEntity()->getChildEntity();
    ASSERT_STREQ(leaf->getFileName(nullptr), "in.txt");
    EXPECT_EQ(leaf->replaceContent(resourceOf(content).get(), nullptr), kVoSuccess);
    EXPECT_TRUE(read.child(1)->_isAttachedTnefMessageModified());
    EXPECT_FALSE(read.child(3)->_isAttachedTnefMessageModified());
    const std::unique_ptr<VoMsgMailMessage> copied(read.message.split());
    EXPECT_EQ(written(read.message), deep(content));
    EXPECT_EQ(written(*copied), deep(content));
    ReadMessage again(written(read.message));
    EXPECT_EQ(written(again.message), deep(content));
  }
}

// A stream that ends anywhere: what can be edited is written and reads back, what cannot is refused and comes out as it
// was. A record that the end cut short may have a new one behind it then.
TEST(TnefEdit, IsWholeOrRefusedWhereverTheStreamEnds) {
  const std::string inner =
      stream(attachment("in.txt", "inner", {text8(0x3707, "in.txt")}) + record(0x9002, kRender) + title("empty.txt"));
  const std::string bytes =
      stream(attachment(std::string(99, 'a'), "A", {text8(0x3704, "a"), text8(0x3707, "a.txt")}) +
             record(0x9003, list({text8(0x1000, "t"), object(0x3701, inner), property(2, 0x3705, "abcd")})) +
             record(0x9002, kRender) +
             record(0x9005, list({counted(0x0102, 0x3701, {prefixed("data")}), property(3, 0x3705, "abcd")})) +
             record(0x9002, kRender) + title("empty.txt") + "\n");
  int edited = 0;
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    SCOPED_TRACE(size);
    const std::string cut = bytes.substr(0, size);
    ReadMessage whole(cut);
    const std::size_t count = entitiesOf(whole.message).size();
    for (std::size_t i = 0; i < count; ++i) {
      ReadMessage read(cut);
      const auto content = resourceOf("NEW", "n");
      VoMsgEntity* const entity = entitiesOf(read.message)[i];
      const VoErrorCode code = entity->setContent(content.get(), "a/b", nullptr);
      const std::string output = written(read.message);
      if (voFailed(code)) {
        EXPECT_EQ(output, cut);
        continue;
      }
      ReadMessage again(output);
      ASSERT_EQ(entitiesOf(again.message).size(), count);
      for (VoMsgEntity* each : {entity, entitiesOf(again.message)[i]}) {
        EXPECT_EQ(contentOf(each), "NEW");
        EXPECT_STREQ(each->getFileName(nullptr), "n");
      }
      ++edited;
    }
  }
  EXPECT_GT(edited, 500);
}

TEST(TnefEdit, RemovesChildrenAndKeepsTheRest) {
  const std::string rest = text8(0x0037, "subject");
  const auto bytes = [&](const Values& properties) {
    Values all = properties;
    all.push_back(rest);
    return stream(kBefore + record(0x9003, list(all)) + record(0x8004, "after") + attachment("a", "A") + kAfter);
  };
  const std::string text = text8(0x1000, "text");
  const std::string inner = object(0x3701, stream(attachment("in", "I")));
  const std::pair<unsigned, std::string> rows[] = {
      {0, bytes({inner})},
      {1, bytes({text})},
      {2, stream(kBefore + record(0x9003, list({text, inner, rest})) + record(0x8004, "after") + kAfter)},
      {4, codeText(kVoOutOfRange)}};
  for (const auto& [index, want] : rows) {
    SCOPED_TRACE(index);
    ReadMessage read(bytes({text, inner}));
    const VoErrorCode code = read.message.removeChildEntityAt(index);
    EXPECT_EQ(voFailed(code) ? codeText(code) : written(read.message), want);
  }
  // Both text and object gone, in either order, the list belongs to the message itself.
  for (const unsigned first : {0u, 1u}) {
    ReadMessage both(bytes({text, inner}));
    EXPECT_EQ(both.message.removeChildEntityAt(first), kVoSuccess);
    EXPECT_EQ(both.message.removeChildEntityAt(0), kVoSuccess);
    EXPECT_EQ(written(both.message), bytes({}));
    ReadMessage again(written(both.message));
    EXPECT_EQ(again.message.countChildEntity(), 2u);
  }
  // The stream inside an object goes as an entity and stays as bytes.
  ReadMessage opened(bytes({inner}));
  EXPECT_EQ(opened.child(0)->removeChildEntityAt(0), kVoSuccess);
  EXPECT_EQ(contentOf(opened.child(0)), stream(attachment("in", "I")));
  EXPECT_EQ(written(opened.message), bytes({inner}));
}

TEST(TnefEdit, GoesThroughAMimeMessage) {
  const auto mail = [](const std::string& encoding, const std::string& body) {
    return "Subject: t\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nhello\r\n"
           "--b\r\nContent-Type: application/ms-tnef;\r\n\tname=winmail.dat\r\n" +
           encoding + "\r\n" + body + "\r\n--b--\r\n";
  };
  const auto base64 = [&](const std::string& bytes) {
    LimitedWriter writer;
    voEncodeBase64(&writer, resourceOf(bytes).get());
    return mail("Content-Transfer-Encoding: base64\r\n", writer.text);
  };
  const std::string binary = "Content-Transfer-Encoding: binary\r\n";
  const std::string old = stream(kBefore + attachment("a.txt", "old") + kAfter);
  const std::string changed = stream(kBefore + attachment("a.txt", "a longer content") + kAfter);
  const std::string half = "half a record";
  // What becomes of it with the content changed; nothing where it is no TNEF.
  const std::tuple<const char*, std::string, std::string> rows[] = {
      {"base64", base64(old), base64(changed)},
      {"binary", mail(binary, old), mail(binary, changed)},
      {"nothing declared", mail("", old), base64(changed)},
      {"7bit", mail("Content-Transfer-Encoding: 7bit\r\n", old), base64(changed)},
      {"damaged", base64(old + half), base64(changed + half)},
      {"wrong signature", base64("x" + old), ""},
      {"empty", base64(""), ""},
  };
  for (const auto& [name, source, want] : rows) {
    SCOPED_TRACE(name);
    MessageFixture message(source);
    EXPECT_EQ(message.code, kVoSuccess);
    EXPECT_EQ(written(*message), source);
    VoMsgEntity* const tnef = message->getChildEntityAt(1)->getChildEntity();
    ASSERT_EQ(tnef && tnef->getEntityTypeID() == kVoEntityTnefMessage, !want.empty());
    if (!tnef) continue;
    EXPECT_EQ(contentOf(tnef->getChildEntity()), "old");
    EXPECT_EQ(tnef->getChildEntity()->replaceContent(resourceOf("a longer content").get(), nullptr), kVoSuccess);
    EXPECT_TRUE(message->isModified());
    const std::unique_ptr<VoMsgMailMessage> copied(message->split());
    EXPECT_EQ(written(*message), want);
    EXPECT_EQ(written(*copied), want);
    MessageFixture again(want);
    EXPECT_EQ(contentOf(again->getChildEntityAt(1)->getChildEntity()->getChildEntity()), "a longer content");
  }
}

}  // namespace
}  // namespace vomsg::test
