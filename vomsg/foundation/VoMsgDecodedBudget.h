// How many decoded and converted bytes a message may keep and be producing: VoMsgSetMaxDecodedSize. Each message that
// is read for itself has one count, which it shares with everything inside it. A few kilobytes on the wire can say
// gigabytes, and whether they fit is not known before they are decoded: so bytes are counted as they are written.
#pragma once

#include <cstdint>
#include <memory>

#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::detail {

class DecodedBudget {
 public:
  explicit DecodedBudget(std::uint64_t limit) : mLimit(limit) {}

  // The count of the message that is at work, else a new one; null when there is no limit.
  static std::shared_ptr<DecodedBudget> forMessage();

  // False, and a shortage, when that is more than the limit leaves.
  bool take(std::uint64_t bytes) noexcept;
  void giveBack(std::uint64_t bytes) noexcept { mUsed -= bytes; }
  std::uint64_t used() const { return mUsed; }

 private:
  const std::uint64_t mLimit;
  std::uint64_t mUsed = 0;
};

// While it lives, what is decoded on this thread counts for the message that `budget` (may be null) belongs to.
class DecodedScope {
 public:
  explicit DecodedScope(const std::shared_ptr<DecodedBudget>& budget);
  ~DecodedScope();
  DecodedScope(const DecodedScope&) = delete;
  DecodedScope& operator=(const DecodedScope&) = delete;

 private:
  const bool mIsSet;
  std::shared_ptr<DecodedBudget> mFormer;
};

// A temporary resource for `size` decoded bytes, which are counted as they are written, until it goes. Null: no room.
std::unique_ptr<VoMsgResourceLocator> decodedResource(std::uint64_t size);

// What a caller handed over, counted while it is written: `target()` stands for it.
class CountedTarget {
 public:
  explicit CountedTarget(const VoMsgResourceLocator& target);
  ~CountedTarget();
  VoMsgResourceLocator& target() const { return mpCounted ? *mpCounted : *mpGiven; }

 private:
  VoMsgResourceLocator* const mpGiven;
  std::unique_ptr<VoMsgResourceLocator> mpCounted;  // null: nothing is counted
};

}  // namespace vomsg::detail
