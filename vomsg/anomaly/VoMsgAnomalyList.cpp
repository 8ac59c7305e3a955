#include "vomsg/anomaly/VoMsgAnomalyList.h"

#include <algorithm>
#include <limits>
#include <map>
#include <mutex>

VoMsgAnomalyList::VoMsgAnomalyList() = default;
VoMsgAnomalyList::~VoMsgAnomalyList() = default;

unsigned VoMsgAnomalyList::count() const { return static_cast<unsigned>(mEntries.size()); }
unsigned VoMsgAnomalyList::countAll() const { return mCountAll; }
VoMsgAnomalyLevel VoMsgAnomalyList::highestLevel() const { return mHighest; }

const VoMsgAnomaly* VoMsgAnomalyList::at(unsigned i) const { return i < mEntries.size() ? &mEntries[i] : nullptr; }

void VoMsgAnomalyList::add(const VoMsgAnomaly& entry) {
  if (mEntries.size() < kMaxEntries) mEntries.push_back(entry);
  if (mCountAll < std::numeric_limits<unsigned>::max()) ++mCountAll;
  mHighest = std::max(mHighest, entry.level);
}

void vomsg::detail::keepAnomalies(const void* message, std::unique_ptr<VoMsgAnomalyList> list) {
  static std::mutex lock;
  static std::map<const void*, std::unique_ptr<VoMsgAnomalyList>> kept;
  const std::lock_guard<std::mutex> guard(lock);
  if (list)
    kept[message] = std::move(list);
  else
    kept.erase(message);
}
