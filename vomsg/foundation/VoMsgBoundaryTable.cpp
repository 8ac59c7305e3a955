#include "vomsg/foundation/VoMsgBoundaryTable.h"

#include <algorithm>
#include <stdexcept>

#include "vomsg/foundation/VoMsgDelimiterLine.h"
#include "vomsg/foundation/VoMsgKeyedHash.h"

namespace vomsg::detail {
namespace {

constexpr std::size_t kCompareOneByOne = 8;  // up to here comparing beats hashing, and no memory is asked for
constexpr std::size_t kFirstSlots = 32;      // a power of two, as every later number of slots

std::uint64_t hashOf(std::string_view boundary) { return keyedHash(processHashKey(), boundary); }

}  // namespace

// The parser pushes while it reads, so what a failed push must leave behind is a table that still answers for the
// boundaries it holds.
void BoundaryTable::push(std::string_view boundary) {
  const auto index = static_cast<Index>(mStack.size());
  const Index begin = index == 0 ? 0 : mStack.back().begin + mStack.back().length;
  if (boundary.size() >= kNone - begin || index == kNone - 1) throw std::length_error("too many boundaries");
  const auto length = static_cast<Index>(boundary.size());
  mBytes.resize(begin);
  mBytes.append(boundary);
  mStack.push_back({begin, length, std::max(length, index == 0 ? 0 : mStack.back().longest), kNone, 0});
  try {
    if (!mSlots.empty() && 2 * mStack.size() <= mSlots.size())
      enter(index);
    else if (mStack.size() > kCompareOneByOne)
      rehash(std::max(kFirstSlots, 2 * mSlots.size()));
  } catch (...) {
    mStack.pop_back();
    throw;
  }
}

void BoundaryTable::pop() {
  if (mStack.empty()) return;
  const Entry entry = mStack.back();
  if (!mSlots.empty()) mSlots[slotOf(bytesOf(entry), entry.hash)] = entry.outer == kNone ? 0 : entry.outer + 1;
  mStack.pop_back();
}

void BoundaryTable::clear() {
  mStack.clear();
  mSlots.clear();
}

BoundaryMatch BoundaryTable::matchDelimiter(std::string_view line) const {
  auto text = delimiterText(line);
  if (!text || text->size() > mStack.back().longest + 2) return {};
  const Index open = find(*text);
  const Index closed = cutCloseMark(*text) ? find(*text) : kNone;
  // A boundary may itself end in "--"; then the inner one of the two readings is meant.
  if (closed != kNone && (open == kNone || closed > open)) return {kVoBoundaryClose, closed};
  if (open != kNone) return {kVoBoundaryDelimiter, open};
  return {};
}

BoundaryTable::Index BoundaryTable::find(std::string_view boundary) const {
  if (!mSlots.empty()) return mSlots[slotOf(boundary, hashOf(boundary))] - 1;  // 0 becomes kNone
  for (auto index = static_cast<Index>(mStack.size()); index-- > 0;)
    if (bytesOf(mStack[index]) == boundary) return index;
  return kNone;
}

// The slot that holds an equal boundary, or the free one where it belongs. At most half of the slots are taken.
std::size_t BoundaryTable::slotOf(std::string_view boundary, std::uint64_t hash) const {
  const std::size_t mask = mSlots.size() - 1;
  std::size_t slot = static_cast<std::size_t>(hash) & mask;
  while (mSlots[slot] != 0) {
    const Entry& entry = mStack[mSlots[slot] - 1];
    if (entry.hash == hash && bytesOf(entry) == boundary) break;
    slot = (slot + 1) & mask;
  }
  return slot;
}

void BoundaryTable::enter(Index index) {
  Entry& entry = mStack[index];
  entry.hash = hashOf(bytesOf(entry));
  Index& slot = mSlots[slotOf(bytesOf(entry), entry.hash)];
  entry.outer = slot - 1;
  slot = index + 1;
}

void BoundaryTable::rehash(std::size_t slots) {
  std::vector<Index> grown(slots, 0);
  mSlots.swap(grown);
  for (Index index = 0; index < mStack.size(); ++index) enter(index);
}

}  // namespace vomsg::detail
