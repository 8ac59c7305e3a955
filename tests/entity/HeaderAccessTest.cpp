// The header block behind an entity: built when it is asked for, and what happens when it cannot be.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <functional>

#include "tests/support/MessageFixture.h"
#include "tests/support/RememberingLog.h"
#include "vomsg/entity/VoMsgMimeEntity.h"

namespace vomsg::test {
namespace {

constexpr char kMixed[] =
    "From: a@b\r\nTo: c@d\r\nSubject: s\r\nContent-Type: multipart/mixed; boundary=B\r\n\r\n"
    "--B\r\nContent-Type: text/plain; n=v\r\n\r\none\r\n--B\r\n\r\ntwo\r\n--B--\r\n";

// No file can be opened while it lives.
class NoDescriptors {
 public:
  NoDescriptors() {
    getrlimit(RLIMIT_NOFILE, &mBefore);
    rlimit none = mBefore;
    none.rlim_cur = 0;
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &mBefore); }

 private:
  rlimit mBefore{};
};

TEST(HeaderAccess, WithoutDescriptorsNothingIsLost) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer opens a pipe to look at an object, and takes none for a broken object";
#endif
  std::string text = "footer";
  const auto footer = resourceOver(text);
  using Message = VoMsgRfc822Message;
  struct Row {
    const char* name;
    std::function<VoErrorCode(Message&)> call;
  };
  const Row rows[] = {
      {"value", [](Message& m) { return m.setHeaderValue("Subject", "t", nullptr, nullptr); }},
      {"parameter", [](Message& m) { return m.setHeaderParameterValue("Content-Type", "n", "t", nullptr, nullptr); }},
      {"removal", [](Message& m) { return m.removeHeader("Subject"); }},
      {"address", [](Message& m) { return m.appendUserAddress("To", "e@f"); }},
      {"content", [&](Message& m) { return m.getChildEntity()->setTextContent(footer.get(), nullptr, "us-ascii"); }},
      {"child",
       [](Message& m) {
         auto part = std::make_unique<VoMsgMimeEntity>();
         const VoErrorCode code = m.appendChildEntity(part.get());
         if (!voFailed(code)) static_cast<void>(part.release());
         return code;
       }},
      {"disclaimer",
       [&](Message& m) {
         auto taken = resourceOver(text);
         const auto position = static_cast<VoMsgDisclaimerPosition_e>(0);
         const VoErrorCode code = m.insertDisclaimerMessage(position, taken.get(), 0, "us-ascii", "utf-8");
         if (!voFailed(code)) static_cast<void>(taken.release());
         return code;
       }},
      {"stripping", [](Message& m) { return m.stripSignaturePart(); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    MessageFixture message(kMixed, Source::file);
    ASSERT_EQ(message.code, kVoSuccess);
    {
      const NoDescriptors none;
      EXPECT_EQ(message->getHeaderValue("Subject", "utf-8"), nullptr);
      EXPECT_EQ(message->countHeaders(), 0u);
      EXPECT_EQ(message->getEntityHeader(), nullptr);
      const VoErrorCode code = row.call(*message);
      EXPECT_TRUE(code == kVoReadFailed || code == kVoNoMemory) << std::hex << code;
      EXPECT_EQ(written(*message), "write failed");
    }
    EXPECT_STREQ(message->getHeaderValue("Subject", "utf-8"), "s");
    EXPECT_EQ(message->countHeaders(), 4u);
    EXPECT_FALSE(message->isModified());
    EXPECT_EQ(written(*message), kMixed);
    EXPECT_EQ(row.call(*message), kVoSuccess);
  }
}

// One line for each failed call, whichever object it was made on, and it names the message.
TEST(HeaderAccess, FailuresNameTheirMessageOnce) {
  MessageFixture message(kMixed);
  VoMsgEntity& part = *message->getChildEntity();
  using Call = std::function<VoErrorCode()>;
  VoMsgRfc822Message& m = *message;
  const Call calls[] = {
      [&] { return m.setHeaderValue("Content-Type", "text/plain", "us-ascii", "no such"); },
      [&] { return m.setHeaderValue("To", "a", "us-ascii", "no such"); },
      [&] { return m.setHeaderValue("Subject", "a", "us-ascii", "no such"); },
      [&] { return m.setHeaderValue("X Y", "a", "us-ascii", nullptr); },
      [&] { return m.setHeaderValue(nullptr, "a", "us-ascii", nullptr); },
      [&] { return part.setHeaderParameterValue("Content-Type", "a b", "c", "us-ascii", nullptr); },
      [&] { return part.setHeaderParameterValue("X", "a", "c", "us-ascii", nullptr); },
      [&] { return part.removeHeaderParameter("Content-Type", nullptr); },
      [&] { return part.getHeader("Content-Type")->removeParameterAt(7); },
      [&] { return part.getHeader("Content-Type")->setFieldValue(nullptr, nullptr, nullptr); },
      [&] { return m.appendHeader(nullptr); },
      [&] { return m.removeHeader(nullptr); },
      [&] { return m.removeHeaderAt(9); },
      [&] { return m.appendUserAddress("Subject", "a"); },
      [&] { return m.insertUserAddressAt("To", "a", 9); },
      [&] { return m.removeUserAddressAt("To", 9); },
      [&] { return m.getEntityHeader()->appendAddress("X", "a"); },
  };
  const std::string tag = m._getUUIDString();
  ASSERT_EQ(tag.size(), 36u);
  for (std::size_t i = 0; i < std::size(calls); ++i) {
    SCOPED_TRACE(i);
    const RememberingLog log;
    EXPECT_TRUE(voFailed(calls[i]()));
    ASSERT_EQ(log.debug.size(), 1u);
    EXPECT_NE(log.debug[0].text.find(tag), std::string::npos) << log.debug[0].text;
  }
}

// A field that the message brought along may be named anything, also where it moves to a part of its own.
TEST(HeaderAccess, OddNamesMoveWithTheirContent) {
  MessageFixture message("Content-Type: text/plain\r\nContent-\xC4: x\r\nX\xD6: y\r\n\r\nbody\r\n");
  EXPECT_EQ(message->setHeaderValue("X\xD6", "z", nullptr, nullptr), kVoSuccess);
  auto part = std::make_unique<VoMsgMimeEntity>();
  ASSERT_EQ(message->appendChildEntity(part.get()), kVoSuccess);
  static_cast<void>(part.release());
  EXPECT_STREQ(message->getChildEntity()->getRawHeaderValue("Content-\xC4"), "x");
  EXPECT_EQ(message->getHeader("Content-\xC4"), nullptr);
  EXPECT_STREQ(message->getRawHeaderValue("X\xD6"), "z");
  EXPECT_EQ(message->removeHeader("X\xD6"), kVoSuccess);
  EXPECT_EQ(message->setHeaderValue("X\xD6", "z", nullptr, nullptr), kVoBadArgument);
}

// A boundary in pieces cuts a body as a plain one does, and is left as it stands.
TEST(HeaderAccess, BoundariesInPieces) {
  struct Row {
    const char* parameters;
    unsigned parts;  // 0: the body stays text
  };
  constexpr Row kRows[] = {
      {"boundary*0=B; boundary*1=C", 2},
      {"boundary*1=C; boundary*0=B", 2},
      {"boundary*=us-ascii''BC", 2},
      {"boundary*=us-ascii'en'B%43", 2},
      {"boundary*0*=us-ascii''%42; boundary*1=C", 2},
      {"boundary*=us-ascii''XX; boundary=BC", 2},  // a plain one counts alone
      {"boundary=XX; boundary*=us-ascii''YY; boundary=BC", 2},
      {"boundary*1a=BC", 0},
      {"boundary*=us-ascii''CB", 1},
  };
  const std::string body = "--BC\r\n\r\none\r\n--BC\r\nContent-Type: application/x\r\n\r\ntwo\r\n--BC--\r\n";
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.parameters);
    const std::string text = std::string("Content-Type: multipart/mixed; ") + row.parameters + "\r\n\r\n" + body;
    MessageFixture message(text);
    EXPECT_EQ(message.code, kVoSuccess);
    if (row.parts < 2) {
      EXPECT_EQ(message->countChildEntity(), 0u);
      continue;
    }
    EXPECT_EQ(message->countChildEntity(), row.parts);
    EXPECT_STREQ(message->getBoundary(), "BC");
    const bool isRepeated = std::string_view(row.parameters).find("boundary=XX") != std::string_view::npos;
    EXPECT_TRUE(isRepeated || written(*message) == text);
    ASSERT_EQ(message->removeChildEntityAt(0), kVoSuccess);
    const std::string shorter = written(*message);
    MessageFixture again(shorter);
    EXPECT_EQ(again->countChildEntity(), 1u) << shorter;
    // A new boundary takes the place of the pieces.
    ASSERT_EQ(message->setHeaderParameterValue("Content-Type", "boundary", "new", nullptr, nullptr), kVoSuccess);
    const std::string renamed = written(*message);
    MessageFixture last(renamed);
    EXPECT_EQ(last->countChildEntity(), 1u) << renamed;
    EXPECT_STREQ(last->getBoundary(), "new");
  }
}

}  // namespace
}  // namespace vomsg::test
