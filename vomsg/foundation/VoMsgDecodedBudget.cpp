#include "vomsg/foundation/VoMsgDecodedBudget.h"

#include <utility>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgShortage.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

thread_local std::shared_ptr<DecodedBudget> tCurrent;
thread_local unsigned tScopes = 0;

// A resource whose written bytes are counted until it goes. It is another resource but for that.
class CountedResource final : public VoMsgResourceLocator {
 public:
  CountedResource(std::unique_ptr<VoMsgResourceLocator> owned, const VoMsgResourceLocator& counted,
                  std::shared_ptr<DecodedBudget> budget)
      : VoMsgResourceLocator(nullptr, nullptr),
        mpOwned(std::move(owned)),
        mCounted(counted),
        mpBudget(std::move(budget)) {}
  ~CountedResource() override { mpBudget->giveBack(mBytes[dataPart] + mBytes[resourceForkPart]); }

  int getResourceType() const override { return mCounted.getResourceType(); }
  VoMsgBufferedReader* getInputStream(VoMsgResourceDataType type) const override {
    return mCounted.getInputStream(type);
  }
  VoMsgBufferedWriter* getOutputStream(VoMsgResourceDataType type) const override;
  bool equal(VoMsgResourceLocator* other) const override { return other == this || mCounted.equal(other); }
  unsigned getSize(VoMsgResourceDataType type) const override { return mCounted.getSize(type); }
  bool hasResourceFork() const override { return mCounted.hasResourceFork(); }

  bool count(VoMsgResourceDataType type, std::uint64_t bytes) const {
    if (!mpBudget->take(bytes)) return false;
    mBytes[type] += bytes;
    return true;
  }

 private:
  const std::unique_ptr<VoMsgResourceLocator> mpOwned;  // null: borrowed
  const VoMsgResourceLocator& mCounted;
  const std::shared_ptr<DecodedBudget> mpBudget;
  mutable std::uint64_t mBytes[2] = {};
};

class CountingStream final : public VoMsgBufferedWriter {
 public:
  CountingStream(const CountedResource& resource, VoMsgResourceLocator::VoMsgResourceDataType type,
                 std::unique_ptr<VoMsgBufferedWriter> writer)
      : VoMsgBufferedWriter(0), mResource(resource), mType(type), mpWriter(std::move(writer)) {}
  ~CountingStream() override { writeBuffer(); }

  bool open() override { return mpWriter->open(); }
  bool close() override { return writeBuffer() && mpWriter->close(); }
  bool isOpen() override { return mpWriter->isOpen(); }
  bool writeBuffer() override {
    const unsigned pending = std::exchange(mUsed, 0);
    if (pending == 0) return mpWriter->flush();
    return mResource.count(mType, pending) && WriterAccess::writeThrough(*mpWriter, mpBuffer, pending) &&
           mpWriter->flush();
  }

 private:
  const CountedResource& mResource;
  const VoMsgResourceLocator::VoMsgResourceDataType mType;
  const std::unique_ptr<VoMsgBufferedWriter> mpWriter;
};

VoMsgBufferedWriter* CountedResource::getOutputStream(VoMsgResourceDataType type) const {
  std::unique_ptr<VoMsgBufferedWriter> writer(mCounted.getOutputStream(type));
  if (!writer) return nullptr;
  mpBudget->giveBack(std::exchange(mBytes[type], 0));  // it begins anew
  return new CountingStream(*this, type, std::move(writer));
}

}  // namespace

std::shared_ptr<DecodedBudget> DecodedBudget::forMessage() {
  if (tCurrent) return tCurrent;
  return MaxDecodedSize == 0 ? nullptr : std::make_shared<DecodedBudget>(MaxDecodedSize);
}

bool DecodedBudget::take(std::uint64_t bytes) noexcept {
  if (bytes > mLimit - mUsed) {
    noteShortage(kVoWriteFailed);
    return false;
  }
  mUsed += bytes;
  return true;
}

// Scopes may end in another order than they began in, as the sources of nested messages are closed; with the last one
// nobody is at work.
DecodedScope::DecodedScope(const std::shared_ptr<DecodedBudget>& budget) : mIsSet(budget != nullptr) {
  if (!mIsSet) return;
  mFormer = std::exchange(tCurrent, budget);
  ++tScopes;
}

DecodedScope::~DecodedScope() {
  if (!mIsSet) return;
  if (--tScopes == 0)
    tCurrent.reset();
  else if (mFormer)
    tCurrent = std::move(mFormer);
}

std::unique_ptr<VoMsgResourceLocator> decodedResource(std::uint64_t size) {
  std::unique_ptr<VoMsgResourceLocator> resource = temporaryResource(size);
  if (!resource || !tCurrent) return resource;
  const VoMsgResourceLocator& counted = *resource;
  return std::make_unique<CountedResource>(std::move(resource), counted, tCurrent);
}

// Streams and names of a resource are reached through its constant interface; only the name of what a uuencode or
// BinHex block holds is set on it, which the caller who passed it as a target expects.
CountedTarget::CountedTarget(const VoMsgResourceLocator& target) : mpGiven(const_cast<VoMsgResourceLocator*>(&target)) {
  if (tCurrent && !dynamic_cast<const CountedResource*>(&target))
    mpCounted = std::make_unique<CountedResource>(nullptr, target, tCurrent);
}

CountedTarget::~CountedTarget() {
  if (!mpCounted) return;
  const char* const name = mpCounted->getResourceName(nullptr);
  if (!*name) return;  // no decoder has set any of it
  mpGiven->setResourceName(name, "us-ascii");
  mpGiven->setFileType(mpCounted->getFileType());
  mpGiven->setFileCreator(mpCounted->getFileCreator());
  mpGiven->setFinderFlag(mpCounted->getFinderFlag());
}

}  // namespace vomsg::detail
