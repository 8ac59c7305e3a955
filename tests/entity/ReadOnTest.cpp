// What the tree shows of odd messages, with and without reading on; unedited they come out as they came in either way.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/support/MessageFixture.h"
#include "vomsg/foundation/VoMsgOptions.h"

namespace {

using namespace vomsg::test;

// Parentheses around what an entity holds; of a leaf its content, "-" for none.
std::string contentsOf(VoMsgEntity& entity) {
  const std::string content = entity.hasChildEntity() || entity.isMultipartEntity() ? "" : contentOf(entity);
  if (!entity.hasChildEntity()) return content.empty() ? "-" : content;
  std::string out = "(";
  for (VoMsgEntity* child = entity.getChildEntity(); child; child = child->getNextSiblingEntity())
    out += contentsOf(*child);
  return out + ")";
}

class Option {
 public:
  explicit Option(int bits) : mFormer(std::exchange(VoMsgExtraOption, bits)) {}
  ~Option() { VoMsgExtraOption = mFormer; }

 private:
  const int mFormer;
};

struct Row {
  const char* name;
  std::string text;
  VoErrorCode code;  // with or without
  const char* usual;
  const char* readOn;
  bool isRewritten = false;  // by a mark of the parser
};

std::string multipart(const std::string& subtype, const std::string& parts, const std::string& boundary = "b") {
  return "Content-Type: multipart/" + subtype + "; boundary=" + boundary + "\r\n\r\n" + parts + "--b--\r\n";
}

const std::string kTwoTypes = "Content-Type: text/plain\r\nContent-Type: text/html\r\n\r\nx";
const std::string kLast = "\r\n--b\r\n\r\nlast\r\n";
const std::string kPartial = "Content-Type: message/partial; id=i\r\n\r\nx";
const std::string kNested = "--b\r\nContent-Type: message/rfc822\r\n\r\n";

const Row kRows[] = {
    {"two types", kTwoTypes, kVoMalformed, "x", "x"},
    {"two types in a part", multipart("mixed", "--b\r\n" + kTwoTypes + kLast), kVoMalformed,
     "(x\r\n--b\r\n\r\nlast\r\n--b--\r\n)", "(xlast)"},
    {"two types in a nested message", multipart("mixed", kNested + kTwoTypes + kLast), kVoMalformed,
     "(Content-Type: text/plain\r\nContent-Type: text/html\r\n\r\nx)", "((x)last)"},
    {"empty boundary", multipart("mixed", "--b\r\nContent-Type: multipart/mixed; boundary=\r\n\r\nx" + kLast),
     kVoMalformed, "(-)", "(-last)"},
    {"partial", kPartial, kVoPartialMessage, "x", "x"},
    {"nested partial", multipart("mixed", kNested + kPartial + kLast), kVoPartialMessage,
     "(Content-Type: message/partial; id=i\r\n\r\nx)", "((x)last)"},
    {"digest", multipart("digest", "--b\r\n\r\nSubject: in\r\n\r\nx" + kLast), kVoSuccess, "(Subject: in\r\n\r\nxlast)",
     "((x)(-))"},
    {"typed part of a digest", multipart("digest", "--b\r\nContent-Type: text/plain\r\n\r\nA: b\r\n"), kVoSuccess,
     "(A: b)", "(A: b)"},
    {"global", "Content-Type: message/global\r\n\r\nSubject: in\r\n\r\nx", kVoSuccess, "Subject: in\r\n\r\nx", "(x)"},
    {"blank at the end of a boundary", multipart("mixed", "--b \r\n\r\nx" + kLast, "\"b \""), kVoSuccess, "-",
     "(xlast)"},
    {"byte order mark", "\xEF\xBB\xBF" + multipart("mixed", "--b\r\n\r\nx" + kLast), kVoSuccess,
     "--b\r\n\r\nx\r\n--b\r\n\r\nlast\r\n--b--\r\n", "(xlast)"},
    {"mbox line", "From a@b Thu Jan  1 00:00:00 1970\r\n" + multipart("mixed", "--b\r\n\r\nx" + kLast), kVoSuccess,
     "(xlast)", "(xlast)", true},
};

TEST(ReadOn, TheTreeShowsWhatIsThere) {
  for (const Row& row : kRows)
    for (const int bits : {0, kVoOptionReadOn}) {
      SCOPED_TRACE(row.name + std::string(bits ? " read on" : ""));
      const Option option(bits);
      for (const Source source : {Source::memory, Source::file}) {
        MessageFixture message(row.text, source);
        VoMsgExtraOption = 0;  // what a message was read with stays
        EXPECT_EQ(message.code, row.code) << std::hex << message.code;
        EXPECT_EQ(contentsOf(*message), bits ? row.readOn : row.usual);
        EXPECT_TRUE(row.isRewritten || written(*message) == row.text) << written(*message);
        const std::unique_ptr<VoMsgMailMessage> copy(message->split());
        EXPECT_EQ(contentsOf(*copy), bits ? row.readOn : row.usual);
        VoMsgExtraOption = bits;
      }
    }
}

// A field of every entity is set in turn; the message is written and read again.
TEST(ReadOn, WhatIsShownCanBeEdited) {
  const Option option(kVoOptionReadOn);
  for (const Row& row : kRows) {
    const std::size_t count = entitiesOf(*MessageFixture(row.text)).size();
    for (std::size_t i = 0; i < count; ++i) {
      SCOPED_TRACE(row.name + (" " + std::to_string(i)));
      MessageFixture message(row.text);
      ASSERT_EQ(entitiesOf(*message)[i]->setHeaderValue("X-Edit", "y", "us-ascii", nullptr), kVoSuccess);
      MessageFixture again(written(*message));
      EXPECT_EQ(contentsOf(*again), row.readOn) << written(*message);
      ASSERT_EQ(entitiesOf(*again).size(), count);
      EXPECT_STREQ(entitiesOf(*again)[i]->getRawHeaderValue("X-Edit"), "y");
    }
  }
}

}  // namespace
