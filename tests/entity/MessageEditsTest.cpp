// Random edits, one or several in a row: what the tree says afterwards is what is read from the message that was
// written; and one edit changes its own range of a real message alone.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/MessageFixture.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/header/VoMsgUserAddress.h"

namespace {

using namespace vomsg::test;

// One line an entity: where it is, what it is, what it holds.
std::string account(VoMsgEntity& root) {
  std::string lines;
  for (VoMsgEntity* entity : entitiesOf(root)) {
    for (const VoMsgEntity* up = entity->getParentEntity(); up; up = up->getParentEntity()) lines += ' ';
    const char* const type = entity->getContentType();
    const char* const edit = entity->getRawHeaderValue("X-Edit");
    const char* const parameter = entity->getHeaderParameterValue("Content-Type", "x-edit", "utf-8");
    lines += (type && *type ? type : "-") + std::string(" ") + (edit ? edit : "-") + (parameter ? parameter : "");
    if (const unsigned to = entity->countUserAddress("To"))
      lines += entity->getUserAddressAt("To", to - 1)->getAddress();
    if (!entity->isMultipartEntity() && !entity->hasChildEntity()) lines += testing::PrintToString(contentOf(*entity));
    lines += '\n';
  }
  return lines;
}

// Where bytes of `entity` stand in the message's own source: the entity itself, or the innermost encoded part around
// the nested message that holds it.
VoMsgRfc822Entity* visibleEntity(VoMsgEntity* entity, std::uint64_t& base) {
  base = 0;
  auto* visible = dynamic_cast<VoMsgRfc822Entity*>(entity);
  for (VoMsgEntity* up = entity; up; up = up->getParentEntity()) {
    auto* const part = dynamic_cast<VoMsgRfc822Entity*>(up->getParentEntity());
    if (!part || !(up->getEntityTypeID() & kVoEntityIsMessage)) continue;
    const std::string encoding = part->getEncoding() ? part->getEncoding() : "";
    const bool encoded = encoding.find_first_of("sS64") != encoding.npos && encoding.size() > 4;
    if (encoded) {
      visible = part;
      base = 0;
    } else {
      base += part->getBodyOffset();
    }
  }
  return visible;
}

bool isMarked(VoMsgEntity& root) {
  for (VoMsgEntity* entity : entitiesOf(root)) {
    const auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity);
    if (!mime || mime->getEntityHeader()->getMark() != vomsg::detail::HeaderMark{}) return true;
  }
  return false;
}

std::vector<std::pair<std::string, std::string>> realMessages() {
  auto messages = sampleMessages();
  const auto corpus = corpusMessages();
  messages.insert(messages.end(), corpus.begin(), corpus.end());
  return messages;
}

// Edits that reach farther than their entity: attaching the message itself, parts that hold its delimiters.
enum class Reach { entity, message };

class RandomEdits {
 public:
  RandomEdits(VoMsgRfc822Message& message, Reach reach, unsigned seed)
      : mMessage(message), mReach(reach), mRandom(seed) {}

  // What it did, for the message of a failure.
  std::string run(unsigned count) {
    std::string done;
    for (unsigned i = 0; i < count; ++i) done += one(i) + "; ";
    return done;
  }

  // Where the source may change by the last edit, if it was the first.
  std::size_t begin = 0, end = 0;

 private:
  VoMsgRfc822Entity& touched(VoMsgRfc822Entity& entity, bool body) {
    std::uint64_t base = 0;
    const VoMsgRfc822Entity* const visible = visibleEntity(&entity, base);
    begin = static_cast<std::size_t>(base + visible->getHeaderOffset());
    const bool isWhole = body || visible != &entity;
    end = static_cast<std::size_t>(base + visible->getBodyOffset() + (isWhole ? visible->getBodySize() : 0));
    return entity;
  }

  unsigned draw(std::size_t below) { return static_cast<unsigned>(mRandom() % below); }

  VoMsgMimeEntity* part(const std::string& content) {
    auto* const made = new VoMsgMimeEntity;
    std::string bytes = mReach == Reach::entity || draw(4) ? content : written(mMessage);
    made->setContent(resourceOver(bytes).get(), "application/x-part", draw(2) ? "8bit" : "base64");
    return made;
  }

  std::string one(unsigned i) {
    std::vector<VoMsgRfc822Entity*> all, leaves;
    for (VoMsgEntity* entity : entitiesOf(mMessage))
      if (auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity)) {
        all.push_back(mime);
        if (!mime->isMultipartEntity() && !mime->hasChildEntity()) leaves.push_back(mime);
      }
    const unsigned at = draw(all.size());
    const unsigned kind = draw(9);
    VoMsgRfc822Entity& entity = touched(*all[at], kind > 2);
    const std::string name = " of " + std::to_string(at);
    const std::string value = "edit" + std::to_string(i);
    switch (kind) {
      case 0:
        entity.setHeaderValue("X-Edit", value.c_str(), "us-ascii", nullptr);
        return "header" + name;
      case 1:
        if (!entity.getContentType()) entity.setHeaderValue("Content-Type", "text/plain", "us-ascii", nullptr);
        entity.setHeaderParameterValue("Content-Type", "x-edit", "a b", "us-ascii", nullptr);
        return "parameter" + name;
      case 2:
        entity.appendUserAddress("To", "Jo Doe <jo@example.org>");
        return "address" + name;
      case 3:
        if (!entity.isMultipartEntity()) return "nothing";
        entity.setHeaderParameterValue("Content-Type", "boundary", value.c_str(), "us-ascii", nullptr);
        return "boundary" + name;
      case 4: {
        if (leaves.empty()) return "nothing";
        static constexpr const char* kEncodings[] = {"base64", "quoted-printable", "7bit", "8bit", "binary"};
        std::string content = draw(2) ? value + "\r\n" : value;
        touched(*leaves[draw(leaves.size())], true)
            .setContent(resourceOver(content).get(), "text/x-new", kEncodings[draw(5)]);
        return "content";
      }
      case 5: {
        const unsigned count = entity.isMultipartEntity() ? entity.countChildEntity() : 1;
        const unsigned place = draw(count + 1);
        VoMsgEntity* const made = part(value);
        if (voFailed(entity.insertChildEntityAt(made, place))) delete made;
        return "insert at " + std::to_string(place) + name;
      }
      case 6: {
        if (!entity.isMultipartEntity() || entity.countChildEntity() < 2) return "nothing";
        const unsigned place = draw(entity.countChildEntity());
        entity.removeChildEntityAt(place);
        return "remove at " + std::to_string(place) + name;
      }
      case 7: {
        if (mReach == Reach::entity || all.size() > 50) return "nothing";
        VoMsgMailMessage* const copy = mMessage.split();
        if (voFailed(entity.appendChildEntity(copy))) delete copy;
        return "attach to" + name;
      }
      default: {
        if (leaves.empty()) return "nothing";
        std::string text = value + " \xC3\xA4\xE2\x82\xAC";
        touched(*leaves[draw(leaves.size())], true).setTextContent(resourceOver(text).get(), "text/plain", "utf-8");
        return "text";
      }
    }
  }

  VoMsgRfc822Message& mMessage;
  const Reach mReach;
  std::mt19937 mRandom;
};

// What is written and read again is what the tree says. Returns what was written.
std::string readBack(VoMsgRfc822Message& message) {
  const std::string want = account(message);
  const std::string out = written(message);
  MessageFixture again(out);
  EXPECT_EQ(again.code, kVoSuccess);
  EXPECT_EQ(account(*again), want);
  const std::unique_ptr<VoMsgMailMessage> copy(message.split());
  EXPECT_EQ(written(*copy), out);
  return out;
}

TEST(MessageEdits, InARowReadBack) {
  const char* const wanted = std::getenv("VOMSG_EDIT_SEEDS");  // a longer run
  const unsigned seeds = wanted ? static_cast<unsigned>(std::atoi(wanted)) : 4;
  for (const auto& [path, bytes] : realMessages())
    for (unsigned seed = 0; seed < seeds; ++seed) {
      MessageFixture message(bytes, seed % 2 ? Source::memory : Source::file);
      if (voFailed(message.code)) continue;
      RandomEdits edits(*message, Reach::message, seed);
      SCOPED_TRACE(path + ", seed " + std::to_string(seed) + ": " + edits.run(1 + seed % 5));
      readBack(*message);
      ASSERT_FALSE(testing::Test::HasFailure());
    }
}

TEST(MessageEdits, OneStaysInItsRange) {
  for (const auto& [path, bytes] : realMessages())
    for (unsigned seed = 0; seed < 12; ++seed) {
      MessageFixture message(bytes, seed % 2 ? Source::memory : Source::file);
      if (voFailed(message.code) || isMarked(*message)) continue;
      RandomEdits edits(*message, Reach::entity, seed);
      SCOPED_TRACE(path + ", seed " + std::to_string(seed) + ": " + edits.run(1));
      const std::string out = readBack(*message);
      const std::size_t tail = bytes.size() - std::min(bytes.size(), edits.end);
      ASSERT_GE(out.size(), edits.begin + tail);
      ASSERT_EQ(out.substr(0, edits.begin), bytes.substr(0, edits.begin));
      ASSERT_EQ(out.substr(out.size() - tail), bytes.substr(bytes.size() - tail));
    }
}

}  // namespace
