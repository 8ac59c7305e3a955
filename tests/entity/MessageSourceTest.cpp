// What a message is read from may change under it, may be asked for as a target, and may be impossible to keep. In each
// case there is a code, and nothing else is touched. A program of its own, because it lets operator new fail.
#include "vomsg/entity/VoMsgMessageSource.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <new>

#include "tests/support/MessageFixture.h"
#include "tests/support/RememberingLog.h"
#include "tests/support/Tools.h"
#include "tests/tnef/StreamBuilder.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"

namespace {
long gUntilFailure = -1;  // allocations that still succeed; negative: all do
}  // namespace

// For all of this program.
__attribute__((noinline)) void* operator new(std::size_t size) {
  if (gUntilFailure == 0 || (gUntilFailure > 0 && gUntilFailure-- == 0)) throw std::bad_alloc();
  void* const block = std::malloc(size);
  return block ? block : throw std::bad_alloc();
}
__attribute__((noinline)) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return vomsg::detail::guardedOr<void*>(nullptr, [size] { return operator new(size); });
}
__attribute__((noinline)) void operator delete(void* block) noexcept { std::free(block); }
__attribute__((noinline)) void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace vomsg::test {
namespace {

constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;

const std::string kMixed =
    "Subject: s\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nfirst\r\n--b\r\n"
    "Content-Type: message/rfc822\r\n\r\nSubject: inner\r\n\r\nnested\r\n--b\r\n\r\n"
    "begin 644 a\r\n#0V%T\r\n`\r\nend\r\n\r\n--b--\r\n";

std::string bytesUnder(const std::string& path) {
  return bytesOf(std::make_unique<VoMsgFileResource>(path.c_str(), nullptr, nullptr).get());
}

std::unique_ptr<VoMsgMailMessage> emptyMessage(bool isTnef) {
  if (isTnef) return std::make_unique<VoMsgTnefMessage>();
  return std::make_unique<VoMsgRfc822Message>();
}

bool isLeaf(VoMsgEntity& entity) { return !entity.hasChildEntity() && !entity.isMultipartEntity(); }

// The clock of a file system may be slower than a test: the time is put forward where it has to differ.
void putForward(const std::string& path) {
  const timespec times[2] = {{0, UTIME_OMIT}, {1'000'000'000, 1}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

struct Change {
  const char* name;
  std::function<void(const ScratchDirectory&, const std::string& path, const std::string& bytes)> apply;
  bool isSeen = true;
};

const Change kChanges[] = {
    {"none", [](const auto&, const auto&, const auto&) {}, false},
    {"cut", [](const auto&, const auto& path, const auto&) { ASSERT_EQ(truncate(path.c_str(), 40), 0); }},
    {"grown", [](const auto& scratch, const auto&, const auto& bytes) { scratch.write("source", bytes + "x"); }},
    {"written anew, as long as before",
     [](const auto& scratch, const auto& path, const auto& bytes) {
       scratch.write("source", std::string(bytes.size(), 'x'));
       putForward(path);
     }},
    {"replaced by one of the same size and time",
     [](const auto& scratch, const auto& path, const auto& bytes) {
       const std::string other = scratch.write("other", std::string(bytes.size(), 'x'));
       struct stat before;
       ASSERT_EQ(stat(path.c_str(), &before), 0);
       const timespec times[2] = {before.st_atim, before.st_mtim};
       ASSERT_EQ(utimensat(AT_FDCWD, other.c_str(), times, 0), 0);
       ASSERT_EQ(rename(other.c_str(), path.c_str()), 0);
     }},
    {"removed", [](const auto&, const auto& path, const auto&) { ASSERT_EQ(unlink(path.c_str()), 0); }},
};

TEST(MessageSource, AChangeUnderTheMessageIsSeenAndTheTargetIsLeftAlone) {
  for (const bool isTnef : {false, true})
    for (const Change& change : kChanges) {
      const std::string bytes = isTnef ? stream(attachment("a.txt", "content")) : kMixed;
      SCOPED_TRACE(std::string(isTnef ? "TNEF, " : "mail, ") + change.name);
      const ScratchDirectory scratch;
      const std::string path = scratch.write("source", bytes);
      const std::string kept = scratch.write("target", "kept");
      const auto message = emptyMessage(isTnef);
      ASSERT_EQ(message->readFrom(new VoMsgFileResource(path.c_str(), nullptr, nullptr)), kVoSuccess);
      const std::unique_ptr<VoMsgMailMessage> copy(message->split());
      change.apply(scratch, path, bytes);
      const VoErrorCode want = change.isSeen ? kVoReadFailed : kVoSuccess;
      for (VoMsgMailMessage* each : {message.get(), copy.get()}) {
        VoMsgFileResource target(kept.c_str(), nullptr, nullptr);
        for (VoMsgEntity* entity : entitiesOf(*each)) {
          int err = 0;
          if (!isLeaf(*entity)) continue;
          EXPECT_EQ(entity->getContent(err, nullptr) != nullptr, !change.isSeen) << entity->getEntityID();
          EXPECT_EQ(static_cast<VoErrorCode>(err), want);
        }
        EXPECT_EQ(each->writeTo(&target), want);
        EXPECT_EQ(bytesUnder(kept), change.isSeen ? "kept" : bytes);
      }
    }
}

TEST(MessageSource, AChangeOfMemoryIsSeenByItsSize) {
  auto* const source = new VoMsgMemoryResource(static_cast<unsigned>(kMixed.size()), nullptr, nullptr);
  std::copy(kMixed.begin(), kMixed.end(), static_cast<char*>(source->getMemoryPointer(kData)));
  VoMsgRfc822Message read;
  ASSERT_EQ(read.readFrom(source), kVoSuccess);
  EXPECT_EQ(written(read), kMixed);
  std::unique_ptr<VoMsgBufferedWriter>(source->getOutputStream(kData))->write("short", 5);
  int err = 0;
  for (VoMsgEntity* entity : entitiesOf(read))
    if (isLeaf(*entity)) {
      EXPECT_EQ(entity->getContent(err, nullptr), nullptr);
    }
  EXPECT_EQ(written(read), "write failed");
}

// A target whose first flush changes the source behind the library's back.
class MeddlingResource : public VoMsgMemoryResource {
 public:
  explicit MeddlingResource(std::string path) : VoMsgMemoryResource(0u, nullptr, nullptr), mPath(std::move(path)) {}
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType type) const override {
    putForward(mPath);
    return VoMsgMemoryResource::getOutputStream(type);
  }

 private:
  std::string mPath;
};

TEST(MessageSource, AChangeWhileItIsWrittenIsSeenBehindTheLastByte) {
  for (const bool isTnef : {false, true})
    for (const bool isEdited : {false, true}) {
      SCOPED_TRACE(isTnef ? "TNEF" : "mail");
      const ScratchDirectory scratch;
      const std::string bytes = isTnef ? stream(attachment("a.txt", "content")) : kMixed;
      const std::string path = scratch.write("source", bytes);
      const auto message = emptyMessage(isTnef);
      ASSERT_EQ(message->readFrom(new VoMsgFileResource(path.c_str(), nullptr, nullptr)), kVoSuccess);
      if (isEdited) {
        ASSERT_EQ(message->removeChildEntityAt(0), kVoSuccess);
      }
      MeddlingResource target(path);
      RememberingLog log;
      EXPECT_EQ(message->writeTo(&target), kVoReadFailed);
      EXPECT_EQ(log.count("can not access original mail message."), 1);
      if (!isEdited) {
        EXPECT_EQ(bytesOf(&target), bytes);
      }
    }
}

// --- targets

TEST(MessageSource, NothingThatIsReadFromBecomesATarget) {
  const ScratchDirectory scratch;
  const std::string own = scratch.write("own", kMixed);
  const std::string other = scratch.write("other", "Subject: other\r\n\r\nfrom elsewhere\r\n");
  const std::string free = scratch.write("free", "whatever");
  const std::string unrelated = scratch.write("unrelated", "Subject: u\r\n\r\nu");
  const std::string hard = scratch.file("hard"), soft = scratch.file("soft");
  ASSERT_EQ(link(own.c_str(), hard.c_str()), 0);
  ASSERT_EQ(symlink(other.c_str(), soft.c_str()), 0);
  VoMsgRfc822Message message, living;
  ASSERT_EQ(message.readFrom(new VoMsgFileResource(own.c_str(), nullptr, nullptr)), kVoSuccess);
  ASSERT_EQ(living.readFrom(new VoMsgFileResource(unrelated.c_str(), nullptr, nullptr)), kVoSuccess);
  auto added = std::make_unique<VoMsgRfc822Message>();
  ASSERT_EQ(added->readFrom(new VoMsgFileResource(other.c_str(), nullptr, nullptr)), kVoSuccess);
  ASSERT_EQ(message.appendEntity(added.get()), kVoSuccess);
  static_cast<void>(added.release());
  const struct {
    const std::string& path;
    VoErrorCode code;
  } rows[] = {{own, kVoBadArgument}, {hard, kVoBadArgument}, {other, kVoBadArgument}, {soft, kVoBadArgument},
              {free, kVoSuccess},    {unrelated, kVoSuccess}};  // of a message that is not in this tree
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    const std::string before = bytesUnder(row.path);
    VoMsgFileResource target(row.path.c_str(), nullptr, nullptr);
    for (VoMsgEntity* entity : entitiesOf(message)) {
      for (int getter = 0; isLeaf(*entity) && getter < 3; ++getter) {
        int err = 0;
        const VoMsgResourceLocator* const got = getter == 0   ? entity->getContent(err, &target)
                                                : getter == 1 ? entity->getRawContent(err, &target)
                                                              : entity->getTextContent(err, &target, "utf-8");
        EXPECT_EQ(static_cast<VoErrorCode>(err) == kVoBadArgument, voFailed(row.code)) << getter;
        EXPECT_TRUE(!got || !voFailed(row.code));
      }
    }
    EXPECT_EQ(message.writeTo(&target), row.code);
    if (voFailed(row.code)) {
      EXPECT_EQ(bytesUnder(row.path), before);
    }
  }
  EXPECT_EQ(written(living), "write failed");  // what it lost, it knows
}

TEST(MessageSource, TheStreamIsNoTargetForItsParts) {
  const ScratchDirectory scratch;
  const std::string bytes = stream(attachment("a.txt", "content"));
  const std::string path = scratch.write("winmail.dat", bytes);
  VoMsgTnefMessage message;
  ASSERT_EQ(message.readFrom(new VoMsgFileResource(path.c_str(), nullptr, nullptr)), kVoSuccess);
  VoMsgFileResource target(path.c_str(), nullptr, nullptr);
  int err = 0;
  EXPECT_EQ(message.getChildEntityAt(0)->getContent(err, &target), nullptr);
  EXPECT_EQ(static_cast<VoErrorCode>(err), kVoBadArgument);
  EXPECT_EQ(message.writeTo(&target), kVoBadArgument);
  EXPECT_EQ(bytesUnder(path), bytes);
}

// --- ownership

class CountedResource : public VoMsgMemoryResource {
 public:
  CountedResource() : VoMsgMemoryResource(const_cast<char*>(kMixed.data()), unsigned(kMixed.size()), nullptr, nullptr) {
    ++living;
  }
  ~CountedResource() override { --living; }
  static int living;
};
int CountedResource::living = 0;

// Whatever the first call says, the resource is the message's; and it never ends as an empty message.
TEST(MessageSource, AResourceThatFindsNoMemoryIsTakenOverAllTheSame) {
  for (const bool isTnef : {false, true}) {
    bool failed = true;
    for (long allocations = 0; failed && allocations < 200; ++allocations) {
      SCOPED_TRACE(allocations);
      const auto message = emptyMessage(isTnef);
      auto* const source = new CountedResource;
      gUntilFailure = allocations;
      const VoErrorCode code = message->readFrom(source);
      failed = gUntilFailure == 0;
      gUntilFailure = -1;
      if (!voFailed(code)) {
        EXPECT_EQ(entitiesOf(*message).size(), isTnef ? 1u : 7u);
      }
      const std::string now = written(*message);
      EXPECT_TRUE(now == kMixed || now == "write failed") << now;
      CountedResource refused;
      if (CountedResource::living == 2) {
        EXPECT_EQ(message->readFrom(&refused), kVoNoMemory);
      }
    }
    EXPECT_FALSE(failed);
    EXPECT_EQ(CountedResource::living, 0);
  }
}

TEST(MessageSource, AnUnreadableOneIsTakenOverAndNeverWritten) {
  for (const bool isTnef : {false, true}) {
    const ScratchDirectory scratch;
    const std::string kept = scratch.write("target", "kept");
    const auto message = emptyMessage(isTnef);
    EXPECT_EQ(message->readFrom(new VoMsgFileResource(scratch.file("none").c_str(), nullptr, nullptr)), kVoReadFailed);
    scratch.write("none", kMixed);  // too late
    VoMsgFileResource target(kept.c_str(), nullptr, nullptr);
    EXPECT_EQ(message->writeTo(&target), kVoReadFailed);
    EXPECT_EQ(bytesUnder(kept), "kept");
  }
}

}  // namespace
}  // namespace vomsg::test
