// The limit on what a message decodes and converts.
#include <gtest/gtest.h>

#include "tests/support/MessageFixture.h"
#include "tests/support/RememberingLog.h"
#include "vomsg/foundation/VoMsgOptions.h"

namespace vomsg::test {
namespace {

struct Limit {
  explicit Limit(unsigned long long bytes) { VoMsgSetMaxDecodedSize(bytes); }
  ~Limit() { VoMsgSetMaxDecodedSize(0); }
};

std::string encodedText(const char* encoding, const std::string& body) {
  return std::string("Content-Type: text/plain; charset=iso-8859-1\r\nContent-Transfer-Encoding: ") + encoding +
         "\r\n\r\n" + body;
}

// One byte less than a message needs is refused, with one line; as many as it needs are enough, however often it asks.
TEST(DecodedSize, CountsWhatIsKept) {
  const struct {
    const char* name;
    std::string message;
    bool asText;
    unsigned long long need;
  } kRows[] = {
      {"as it is: nothing is decoded", encodedText("8bit", "abc\r\n"), false, 1},
      {"quoted-printable", encodedText("quoted-printable", "a=E9=E9\r\n"), false, 5},
      {"base64", encodedText("base64", "AAECAwQF"), false, 6},
      {"uuencode", encodedText("x-uuencode", "begin 644 a\r\n#86)C\r\n`\r\nend\r\n"), false, 3},
      {"converted", encodedText("8bit", "\xE9\xE9\xE9"), true, 6},
      {"decoded and converted", encodedText("quoted-printable", "=E9=E9=E9"), true, 9},
      {"NULs that fold up", encodedText("base64", "AAAAAAAA"), true, 12},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    const auto ask = [&](MessageFixture& message) {
      int code = 0;
      row.asText ? message->getTextContent(code, nullptr, "utf-8") : message->getContent(code, nullptr);
      return static_cast<VoErrorCode>(code);
    };
    {
      const Limit limit(row.need);
      MessageFixture message(row.message);
      for (int again = 0; again < 3; ++again) EXPECT_EQ(ask(message), kVoSuccess);
    }
    if (row.need == 1) continue;
    const Limit limit(row.need - 1);
    MessageFixture message(row.message);
    RememberingLog log;
    EXPECT_EQ(ask(message), kVoWriteFailed);
    EXPECT_EQ(log.count("failed"), 1);
    EXPECT_EQ(written(*message), row.message);
  }
}

TEST(DecodedSize, ACallersOwnTargetCountsWhileItIsWritten) {
  const std::string text = encodedText("base64", "AAECAwQF");
  std::string room;
  const auto target = resourceOver(room);
  int code = 0;
  for (const unsigned long long size : {5ull, 6ull}) {
    const Limit limit(size);
    MessageFixture message(text);
    for (int again = 0; again < 3; ++again) {
      message->getContent(code, target.get());
      EXPECT_EQ(static_cast<VoErrorCode>(code), size < 6 ? kVoWriteFailed : kVoSuccess);
    }
  }
}

// A message that cannot be looked into ends the reading; what lies beside it shares its count.
TEST(DecodedSize, EndsTheReadingWhereItIsReached) {
  const std::string inner = "Subject: inner\r\n\r\n" + std::string(300, 'x') + "\r\n";
  std::string encoded;
  for (const char c : inner) {
    char escape[4];
    std::snprintf(escape, sizeof escape, "=%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    encoded += escape;
    if (encoded.size() % 75 > 70) encoded += "=\r\n";
  }
  std::string part =
      "--b\r\nContent-Type: message/rfc822\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n" + encoded + "\r\n";
  const std::string two = "Content-Type: multipart/mixed; boundary=b\r\n\r\n" + part + part + "--b--\r\n";
  constexpr struct {
    unsigned long long limit;
    VoErrorCode code;
    std::size_t subjects;
  } kRows[] = {{0, kVoSuccess, 2}, {5000, kVoSuccess, 2}, {500, kVoWriteFailed, 1}, {100, kVoWriteFailed, 0}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.limit);
    const Limit limit(row.limit);
    MessageFixture message(two);
    EXPECT_EQ(message.code, row.code);
    std::size_t subjects = 0;
    for (VoMsgEntity* entity : entitiesOf(*message)) subjects += entity->getHeaderValue("Subject", "utf-8") != nullptr;
    EXPECT_EQ(subjects, row.subjects);
    EXPECT_EQ(written(*message), two);
  }
}

}  // namespace
}  // namespace vomsg::test
