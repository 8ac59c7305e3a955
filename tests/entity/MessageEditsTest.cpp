// Several random edits in a row: what the tree says afterwards is what is read from the message that was written.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/MessageFixture.h"
#include "vomsg/entity/VoMsgMimeEntity.h"

namespace {

using namespace vomsg::test;

// One line an entity: where it is, what it is, what it holds.
std::string account(VoMsgEntity& root) {
  std::string lines;
  for (VoMsgEntity* entity : entitiesOf(root)) {
    for (const VoMsgEntity* up = entity->getParentEntity(); up; up = up->getParentEntity()) lines += ' ';
    const char* const type = entity->getContentType();
    const char* const edit = entity->getRawHeaderValue("X-Edit");
    lines += (type && *type ? type : "-") + std::string(" ") + (edit ? edit : "-");
    if (!entity->isMultipartEntity() && !entity->hasChildEntity()) lines += testing::PrintToString(contentOf(*entity));
    lines += '\n';
  }
  return lines;
}

class RandomEdits {
 public:
  RandomEdits(VoMsgRfc822Message& message, unsigned seed) : mMessage(message), mRandom(seed) {}

  // What it did, for the message of a failure.
  std::string run(unsigned count) {
    std::string done;
    for (unsigned i = 0; i < count; ++i) done += one(i) + "; ";
    return done;
  }

 private:
  unsigned draw(std::size_t below) { return static_cast<unsigned>(mRandom() % below); }

  VoMsgMimeEntity* part(const std::string& content) {
    auto* const made = new VoMsgMimeEntity;
    std::string bytes = draw(4) ? content : written(mMessage);
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
    VoMsgRfc822Entity& entity = *all[at];
    const std::string name = " of " + std::to_string(at);
    const std::string value = "edit" + std::to_string(i);
    switch (draw(7)) {
      case 0:
        entity.setHeaderValue("X-Edit", value.c_str(), "us-ascii", nullptr);
        return "header" + name;
      case 1:
        if (!entity.isMultipartEntity()) return "nothing";
        entity.setHeaderParameterValue("Content-Type", "boundary", value.c_str(), "us-ascii", nullptr);
        return "boundary" + name;
      case 2: {
        if (leaves.empty()) return "nothing";
        static constexpr const char* kEncodings[] = {"base64", "quoted-printable", "7bit", "8bit", "binary"};
        std::string content = draw(2) ? value + "\r\n" : value;
        leaves[draw(leaves.size())]->setContent(resourceOver(content).get(), "text/x-new", kEncodings[draw(5)]);
        return "content";
      }
      case 3: {
        const unsigned count = entity.isMultipartEntity() ? entity.countChildEntity() : 1;
        const unsigned place = draw(count + 1);
        VoMsgEntity* const made = part(value);
        if (voFailed(entity.insertChildEntityAt(made, place))) delete made;
        return "insert at " + std::to_string(place) + name;
      }
      case 4: {
        if (!entity.isMultipartEntity() || entity.countChildEntity() < 2) return "nothing";
        const unsigned place = draw(entity.countChildEntity());
        entity.removeChildEntityAt(place);
        return "remove at " + std::to_string(place) + name;
      }
      case 5: {
        if (all.size() > 50) return "nothing";
        VoMsgMailMessage* const copy = mMessage.split();
        if (voFailed(entity.appendChildEntity(copy))) delete copy;
        return "attach to" + name;
      }
      default: {
        if (leaves.empty()) return "nothing";
        std::string text = value + " \xC3\xA4\xE2\x82\xAC";
        leaves[draw(leaves.size())]->setTextContent(resourceOver(text).get(), "text/plain", "utf-8");
        return "text";
      }
    }
  }

  VoMsgRfc822Message& mMessage;
  std::mt19937 mRandom;
};

TEST(MessageEdits, InARowReadBack) {
  auto messages = sampleMessages();
  const auto corpus = corpusMessages();
  messages.insert(messages.end(), corpus.begin(), corpus.end());
  const char* const wanted = std::getenv("VOMSG_EDIT_SEEDS");  // a longer run
  const unsigned seeds = wanted ? static_cast<unsigned>(std::atoi(wanted)) : 4;
  for (const auto& [path, bytes] : messages)
    for (unsigned seed = 0; seed < seeds; ++seed) {
      MessageFixture message(bytes, seed % 2 ? Source::memory : Source::file);
      if (voFailed(message.code)) continue;
      const std::string done = RandomEdits(*message, seed).run(1 + seed % 5);
      const std::string want = account(*message);
      const std::string out = written(*message);
      MessageFixture again(out);
      ASSERT_EQ(again.code, kVoSuccess) << path << ", seed " << seed << ": " << done;
      ASSERT_EQ(account(*again), want) << path << ", seed " << seed << ": " << done;
      const std::unique_ptr<VoMsgMailMessage> copy(message->split());
      ASSERT_EQ(written(*copy), out) << path << ", seed " << seed << ": " << done;
    }
}

}  // namespace
