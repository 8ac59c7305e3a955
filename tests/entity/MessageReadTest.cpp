#include <gtest/gtest.h>

#include <pthread.h>

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/FileSizeLimit.h"
#include "tests/support/MessageFixture.h"
#include "tests/support/RememberingLog.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/header/VoMsgUserAddress.h"

namespace {

using namespace vomsg::test;

std::string multipart(const std::string& body) { return "Content-Type: multipart/mixed; boundary=b\r\n\r\n" + body; }

struct Row {
  const char* name;
  std::string message;
  VoErrorCode code;
  const char* outline;           // type, header offset+size, body offset+size
  const char* header = nullptr;  // what the block becomes when the parser marks it
};

const Row kRows[] = {
    {"plain", "Subject: x\r\n\r\nhello\r\n", kVoSuccess, "- 0+14 14+7\n"},
    {"empty", "", kVoSuccess, "- 0+0 0+0\n"},
    {"no empty line", "Subject: x\r\n", kVoSuccess, "- 0+12 12+0\n"},
    {"two parts", multipart("pre\r\n--b\r\n\r\none\r\n--b\r\nA: 1\r\n\r\ntwo\r\n--b--\r\nepi"), kVoSuccess,
     "multipart/mixed 0+45 45+45\n - 55+2 57+3\n - 67+8 75+3\n"},
    {"line ends of one character", "Content-Type: multipart/mixed; boundary=b\n\n--b\n\none\n--b--\n", kVoSuccess,
     "multipart/mixed 0+43 43+15\n - 47+1 48+3\n"},
    {"lone CR", "Content-Type: multipart/mixed; boundary=b\r\r--b\r\rone\r--b--\r", kVoSuccess,
     "multipart/mixed 0+43 43+15\n - 47+1 48+3\n"},
    {"close delimiter missing", multipart("--b\r\n\r\none\r\n"), kVoSuccess,
     "multipart/mixed 0+45 45+12\n - 50+2 52+5\n"},
    {"delimiter after delimiter", multipart("--b\r\n--b\r\n\r\n--b--"), kVoSuccess,
     "multipart/mixed 0+45 45+17\n - 50+0 50+0\n - 55+2 57+0\n"},
    {"header runs into a delimiter", multipart("--b\r\nA: 1\r\n--b--\r\n"), kVoSuccess,
     "multipart/mixed 0+45 45+18\n - 50+6 56+0\n"},
    {"without boundary", "Content-Type: multipart/mixed\r\n\r\n--b\r\n", kVoSuccess, "text/plain 0+33 33+5\n",
     "Content-Type: text/plain;\r\n\tcharset=us-ascii\r\n\r\n"},
    {"boundary without value", "Content-Type: multipart/mixed; boundary=\r\n\r\n--b\r\n", kVoMalformed,
     "multipart/mixed 0+44 44+5\n"},
    {"last of two boundaries", "Content-Type: multipart/mixed; boundary=a; boundary=b\r\n\r\n--a\r\n--b\r\n\r\nx",
     kVoSuccess, "multipart/mixed 0+57 57+13\n - 67+2 69+1\n",
     "Content-Type: multipart/mixed;\r\n\tboundary=b\r\n\r\n"},
    {"two types that agree", "Content-Type: text/plain\r\nContent-Type: TEXT/plain\r\n\r\nx", kVoSuccess,
     "TEXT/plain 0+54 54+1\n", "Content-Type: TEXT/plain\r\n\r\n"},
    {"two types that differ", "Content-Type: text/plain\r\nContent-Type: text/html\r\n\r\nx", kVoMalformed,
     "text/html 0+53 53+1\n"},
    {"fragment", "Content-Type: message/partial\r\n\r\nx", kVoPartialMessage, "message/partial 0+33 33+1\n"},
    {"outer delimiter ends an open inner multipart",
     multipart("--b\r\nContent-Type: multipart/mixed; boundary=c\r\n\r\n--c\r\n\r\nx\r\n--b--\r\n"), kVoSuccess,
     "multipart/mixed 0+45 45+67\n multipart/mixed 50+45 95+8\n  - 100+2 102+1\n"},
    {"closed boundary is text", multipart("--b--\r\n--b\r\n\r\nx"), kVoSuccess, "multipart/mixed 0+45 45+15\n"},
    {"nested message", "Content-Type: message/rfc822\r\n\r\nSubject: in\r\n\r\nx", kVoSuccess,
     "message/rfc822 0+32 32+16\n - 0+15 15+1\n"},
    {"nested message in base64",
     "Content-Type: message/rfc822\r\nContent-Transfer-Encoding: base64\r\n\r\nU3ViamVjdDogaW4NCg0KeA==\r\n",
     kVoSuccess, "message/rfc822 0+67 67+26\n - 0+15 15+1\n"},
    {"attached message by name", "Content-Type: application/octet-stream; name=a.EML\r\n\r\nA: 1\r\n\r\n", kVoSuccess,
     "application/octet-stream 0+54 54+8\n - 0+8 8+0\n"},
    {"name too short", "Content-Type: application/octet-stream; name=.eml\r\n\r\nA: 1\r\n\r\n", kVoSuccess,
     "application/octet-stream 0+53 53+8\n"},
};

TEST(MessageRead, CutsAMessageIntoItsEntities) {
  for (const Row& row : kRows)
    for (const Source source : {Source::memory, Source::file}) {
      SCOPED_TRACE(row.name);
      MessageFixture message(row.message, source);
      EXPECT_EQ(message.code, row.code);
      EXPECT_EQ(outline(*message), row.outline);
      const std::string body = row.message.substr(message->getHeaderSize());
      EXPECT_EQ(written(*message), row.header ? row.header + body : row.message);
    }
}

std::string nested(int depth, const char* type) {
  std::string text;
  for (int i = 0; i < depth; ++i)
    text += std::string("Content-Type: ") + type + "; boundary=b" + std::to_string(i) + "\r\n\r\n--b" +
            std::to_string(i) + "\r\n";
  return text + "\r\ninnermost\r\n";
}

TEST(MessageRead, AnyDepthOfMultiparts) {
  const std::string text = nested(100000, "multipart/mixed");
  MessageFixture message(text);
  EXPECT_EQ(message.code, kVoSuccess);
  EXPECT_EQ(entitiesOf(*message).size(), 100001u);
  VoMsgEntity* const innermost = entitiesOf(*message).back();
  EXPECT_EQ(innermost->setHeaderValue("X-Deep", "yes", "us-ascii", nullptr), kVoSuccess);
  const std::unique_ptr<VoMsgMailMessage> copy(message->split());
  ASSERT_TRUE(copy);
  std::string want = text;
  want.insert(text.find("\r\ninnermost"), "X-Deep: yes\r\n");
  EXPECT_EQ(written(*copy), want);
}

TEST(MessageRead, NestedMessagesEndAtTheExtractLevel) {
  std::string text;
  for (int i = 0; i < 25; ++i)
    text += "Content-Type: multipart/mixed; boundary=b" + std::to_string(i) + "\r\n\r\n--b" + std::to_string(i) +
            "\r\nContent-Type: message/rfc822\r\n\r\n";
  text += "Subject: last\r\n\r\nx";
  MessageFixture message(text);
  EXPECT_EQ(message.code, kVoSuccess);
  int messages = 0;
  for (VoMsgEntity* entity : entitiesOf(*message)) messages += (entity->getEntityTypeID() & kVoEntityIsMessage) != 0;
  EXPECT_EQ(messages, 21);  // the message and 20 nested ones
  EXPECT_EQ(entitiesOf(*message).back()->getNestingLevel(), 20u);
  EXPECT_STREQ(entitiesOf(*message).back()->getContentType(), "message/rfc822");
}

// On a stack that no recursion would fit on.
void onASmallStack(const std::function<void()>& body) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  pthread_t thread;
  void* (*const run)(void*) = [](void* work) -> void* {
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&body)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(MessageRead, AnyDepthOfMessages) {
  const int level = std::exchange(VoMsgMailMessage::mMaxExtractLevel, 1 << 30);
  struct Row {
    int depth;
    std::string block;
    Source source;
  };
  const std::string message = "Content-Type: message/rfc822\r\n\r\n";
  const std::string encoded = "Content-Type: message/rfc822\nContent-Transfer-Encoding: quoted-printable\n\n";
  for (const Row& row :
       {Row{100000, message, Source::memory}, Row{3000, message, Source::file}, Row{300, encoded, Source::memory}}) {
    std::string text;
    for (int i = 0; i < row.depth; ++i) text += row.block;
    text += "Subject: innermost\n\nx";
    onASmallStack([&] {
      MessageFixture nested(text, row.source);
      EXPECT_EQ(nested.code, kVoSuccess);
      unsigned count = 0;
      VoMsgEntity* last = nullptr;
      VoMsgEntityIterator walk(&*nested);
      for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) {
        EXPECT_FALSE(entity->isSignedPart());
        last = entity;
        ++count;
      }
      EXPECT_EQ(count, static_cast<unsigned>(row.depth) + 1);
      EXPECT_EQ(last->getNestingLevel(), static_cast<unsigned>(row.depth) - 1);
      EXPECT_STREQ(last->getHeaderValue("Subject", "us-ascii"), "innermost");
      EXPECT_EQ(written(*nested), text);
    });
  }
  VoMsgMailMessage::mMaxExtractLevel = level;
}

TEST(MessageRead, TagsAndReportsWhatHappens) {
  RememberingLog log;
  MessageFixture message("Content-Type: text/plain\r\nContent-Type: text/html\r\n\r\nx");
  EXPECT_EQ(log.count("parsing message."), 1);
  EXPECT_EQ(log.count("detected as malformed mail message."), 1);
  EXPECT_EQ(log.count(message->_getUUIDString()), static_cast<int>(log.debug.size()));
  EXPECT_EQ(message->readFrom(nullptr), kVoBadArgument);
  std::string more = "x";
  EXPECT_EQ(message->readFrom(resourceOver(more).get()), kVoNoMemory);
  EXPECT_EQ(log.count("Resource of this message object has already existed."), 1);
}

// While it lives, neither memory nor a file takes temporary data.
class NoTemporaryRoom {
 public:
  NoTemporaryRoom() {
    for (unsigned size = VoMsgResourceManager::getMaxMemoryResourceSize(); size > 0; size /= 2) do
        mHeld.emplace_back(VoMsgResourceManager::createTmpResource(size));
      while (mHeld.back()->getResourceType() == VoMsgResourceLocator::memory);
  }

 private:
  const FileSizeLimit mLimit{0};
  std::vector<std::unique_ptr<VoMsgResourceLocator>> mHeld;  // zero pages, never touched
};

// What is not looked into for want of room must not vanish under a success code. What is broken may.
TEST(MessageRead, AShortageEndsTheParseAndBrokenContentDoesNot) {
  const std::string block = "begin 644 a.eml\r\n/4W5B:F5C=#H@> H*:&D*\r\n`\r\nend\r\n";
  const struct {
    const char* name;
    std::string message;
    std::size_t entities;  // with room, and without
    VoErrorCode code;
    std::size_t left;
  } rows[] = {
      {"TNEF by type", "Content-Type: application/ms-tnef\r\nContent-Transfer-Encoding: base64\r\n\r\neJ8+IjEy", 2,
       kVoWriteFailed, 1},
      {"TNEF by name", "Content-Type: a/b; name=winmail.dat\r\nContent-Transfer-Encoding: base64\r\n\r\neJ8+IjEy", 2,
       kVoWriteFailed, 1},
      {"encoded message", "Content-Type: message/rfc822\r\nContent-Transfer-Encoding: base64\r\n\r\nQTogMQ0KDQp4", 2,
       kVoWriteFailed, 1},
      {"encoded text",
       "Content-Transfer-Encoding: base64\r\n\r\nYmVnaW4gNjQ0IGEuZW1sDQovNFc1QjpGNUM9I0hAPiBIKjomRCoNCmANCmVuZA0K", 4,
       kVoNoMemory, 1},
      {"message in a text", "\r\n" + block, 4, kVoNoMemory, 3},
      {"message in an epilogue", multipart("--b\r\n\r\none\r\n--b--\r\n" + block), 5, kVoNoMemory, 4},
      {"the first of two parts", multipart("--b\r\n\r\n" + block + "\r\n--b\r\n\r\ntwo"), 6, kVoNoMemory, 4},
      {"a range needs no room", "Content-Type: message/rfc822\r\n\r\nA: 1\r\n\r\nx", 2, kVoSuccess, 2},
      {"no TNEF after all", "Content-Type: a/b; name=winmail.dat\r\n\r\nhello", 1, kVoWriteFailed, 1},
      {"no block after all", "\r\nbegin 644 a.eml\r\nhello", 1, kVoSuccess, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    MessageFixture whole(row.message);
    EXPECT_EQ(whole.code, kVoSuccess);
    EXPECT_EQ(entitiesOf(*whole).size(), row.entities);
    RememberingLog log;
    const auto less = [&] {
      const NoTemporaryRoom noRoom;
      return std::make_unique<MessageFixture>(row.message);
    }();
    EXPECT_EQ(less->code, row.code);
    EXPECT_EQ(log.count("can not allocate memory"), row.code == kVoNoMemory);
    EXPECT_EQ(entitiesOf(**less).size(), row.left);
    EXPECT_EQ(written(**less), row.message);
  }
}

// Whatever the bytes: a code, a usable tree, the same bytes back, from either kind of source.
void surviveUnchanged(const std::string& bytes) {
  std::string trees[2];
  for (const Source source : {Source::memory, Source::file}) {
    MessageFixture message(bytes, source);
    trees[source == Source::file] = std::to_string(message.code) + "\n" + outline(*message);
    bool marked = false;
    for (VoMsgEntity* entity : entitiesOf(*message)) {
      int err = 0;
      entity->getContent(err, nullptr);
      entity->getContentSize();
      const auto text = [](const char* value) { return value ? std::string("=") + value : std::string(); };
      const std::string before = text(entity->getContentType()) + text(entity->getEncoding());
      if (const auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity))
        marked = marked || mime->getEntityHeader()->getMark() != vomsg::detail::HeaderMark{};
      // The header block, which is there now, says what was known without it.
      ASSERT_EQ(text(entity->getContentType()) + text(entity->getEncoding()), before);
    }
    const std::string first = written(*message);
    if (!marked) {
      ASSERT_EQ(first, bytes);
    }
    MessageFixture again(first);
    if (!voFailed(message.code)) {
      ASSERT_EQ(written(*again), first);
    }
  }
  ASSERT_EQ(trees[0], trees[1]);
}

TEST(MessageRead, EveryCorpusMessageComesOutAsItCameIn) {
  if (corpusMessages().empty()) GTEST_SKIP() << "the public corpus is not here";
  for (const auto& [path, bytes] : corpusMessages()) {
    SCOPED_TRACE(path);
    surviveUnchanged(bytes);
  }
}

TEST(MessageRead, TruncatedAndMutatedSamplesComeOutAsTheyCameIn) {
  std::mt19937 random(20);
  for (const auto& [path, bytes] : sampleMessages()) {
    SCOPED_TRACE(path);
    for (std::size_t cut = 0; cut < bytes.size(); cut += 1 + bytes.size() / 400) surviveUnchanged(bytes.substr(0, cut));
    for (int round = 0; round < 60 && !bytes.empty(); ++round) {
      std::string mutant = bytes;
      static constexpr char kBytes[] = "\r\n-=: \t;\"<>?\0\xff";
      mutant[random() % mutant.size()] = kBytes[random() % (sizeof kBytes - 1)];
      surviveUnchanged(mutant);
    }
  }
}

// Blocks without a charset of their own inherit that of the part around them for 8-bit names.
TEST(MessageRead, NamesAreReadInTheCharsetOfThePartAround) {
  for (const char* type : {"message/rfc822; charset=iso-8859-2", "message/rfc822"}) {
    MessageFixture message(std::string("Content-Type: ") + type + "\r\n\r\nFrom: \xA3uk <l@x.org>\r\n\r\nx");
    VoMsgUserAddress* const from = entitiesOf(*message)[1]->getUserAddressAt("From", 0);
    ASSERT_NE(from, nullptr);
    EXPECT_EQ(std::string(from->getName("utf-8")) == "\xC5\x81uk", std::string(type).size() > 14) << type;
  }
}

}  // namespace
