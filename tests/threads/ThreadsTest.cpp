// Four threads, each with messages of its own, doing all that the library can do with one. What they share is found by
// the thread sanitizer (the preset `tsan`); what comes out wrong when a count is lost is checked here.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <set>
#include <thread>

#include "tests/support/MessageFixture.h"
#include "vomsg/encoding/VoBase64.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/header/VoMsgEncodedWord.h"
#include "vomsg/header/VoMsgUserAddress.h"

namespace vomsg::test {
namespace {

constexpr int kThreads = 4;

struct Seen {
  std::vector<std::uint32_t> ids;
  std::set<std::string> uuids;
  std::size_t messages = 0;
  std::string answers;  // of every getter: the same in each thread
};

void ask(VoMsgRfc822Message& message, Seen& seen) {
  for (VoMsgEntity* entity : entitiesOf(message)) {
    seen.ids.push_back(entity->getEntityID());
    int err = 0;
    for (const char* name : {"Subject", "From", "Content-Type", "Received"})
      if (const char* const value = entity->getHeaderValue(name, "utf-8")) seen.answers += value;
    for (unsigned i = 0; i < entity->countUserAddress("To"); ++i) entity->getUserAddressAt("To", i);
    if (const char* const file = entity->getFileName("utf-8")) seen.answers += file;
    seen.answers += bytesOf(entity->getContent(err, nullptr)) + bytesOf(entity->getTextContent(err, nullptr, "utf-8"));
    seen.answers += std::to_string(entity->getNestingLevel()) + std::to_string(entity->isSignedPart());
  }
}

void change(VoMsgRfc822Message& message) {
  std::string text =
                  "Gr\xC3\xBC\xC3\x9F"
                  "e\r\n",
              disclaimer = "Not for you.";
  message.setHeaderValue("Subject", "\xE6\x97\xA5\xE6\x9C\xAC", "utf-8", "iso-2022-jp");
  message.appendUserAddress("To", "A <a@example.org>");
  for (VoMsgEntity* entity : entitiesOf(message))
    if (!entity->hasChildEntity() && entity->isContentType("text", "plain"))
      entity->replaceTextContent(resourceOver(text).get(), "utf-8", VoMsgReplaceOption{});
  auto added = std::make_unique<VoMsgMimeEntity>();
  added->setContent(resourceOver(text).get(), "application/octet-stream", "base64");
  if (!voFailed(message.appendEntity(added.get()))) static_cast<void>(added.release());
  auto resource = resourceOver(disclaimer);
  if (!voFailed(
          message.insertDisclaimerMessage(kVoDisclaimerBottom, resource.get(), kVoDisclaimerHtml, "utf-8", nullptr)))
    static_cast<void>(resource.release());
  message.stripSignaturePart();
}

// What one thread does. ICU, the temporary files, the detector, the generator: everything is asked at some point.
void work(const std::vector<std::pair<std::string, std::string>>& samples, Seen& seen) {
  for (const auto& [name, bytes] : samples)
    for (const Source source : {Source::memory, Source::file}) {
      MessageFixture message(bytes, source);
      ask(*message, seen);
      seen.messages += written(*message) == bytes;
      const std::unique_ptr<VoMsgMailMessage> copy(message->split());
      change(*message);
      written(*message);
      char uuid[37] = "";
      VoUUID_t made;
      vo_createUUID(&made);
      vo_stringFromUUID(&made, uuid);
      seen.uuids.insert(uuid);
      const std::unique_ptr<VoMsgResourceLocator> large(VoMsgResourceManager::createTmpResource(0x100001)),
          small(VoMsgResourceManager::createTmpResource(1000));
      const detail::CString encoded(voEncodeBase64(bytes.c_str()));
    }
}

TEST(Threads, MessagesOfTheirOwnDoNotMeet) {
  const auto samples = sampleMessages();
  ASSERT_FALSE(samples.empty());
  const unsigned before = VoMsgResourceManager::currentAllocateMemorySize();
  std::vector<Seen> seen(kThreads);
  {
    std::vector<std::thread> threads;
    std::atomic<int> waiting = kThreads;
    for (Seen& one : seen)
      threads.emplace_back([&] {
        for (--waiting; waiting > 0;) std::this_thread::yield();  // all at once
        work(samples, one);
      });
    for (std::thread& thread : threads) thread.join();
  }
  std::set<std::uint32_t> ids;
  std::set<std::string> uuids;
  std::size_t entities = 0;
  for (const Seen& one : seen) {
    EXPECT_EQ(one.messages, 2 * samples.size());
    EXPECT_EQ(one.answers, seen[0].answers);
    ids.insert(one.ids.begin(), one.ids.end());
    uuids.insert(one.uuids.begin(), one.uuids.end());
    entities += one.ids.size();
  }
  EXPECT_EQ(ids.size(), entities);  // each entity has its own
  EXPECT_EQ(uuids.size(), kThreads * 2 * samples.size());
  EXPECT_EQ(VoMsgResourceManager::currentAllocateMemorySize(), before);
}

// The budget is the one thing that every thread writes all the time.
TEST(Threads, TheBudgetLosesNothing) {
  const unsigned before = VoMsgResourceManager::currentAllocateMemorySize();
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([] {
      for (int n = 0; n < 20000; ++n) std::unique_ptr<VoMsgResourceLocator>(VoMsgResourceManager::createTmpResource(1));
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(VoMsgResourceManager::currentAllocateMemorySize(), before);
}

}  // namespace
}  // namespace vomsg::test
