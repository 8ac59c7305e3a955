#include "vomsg/anomaly/VoMsgAnomalyList.h"

#include <algorithm>
#include <limits>

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
