// What VoMsgMailMessage::getAnomalies() hands out.
#pragma once

#include <memory>
#include <vector>

#include "vomsg/anomaly/VoMsgAnomaly.h"

class VOMSG_API VoMsgAnomalyList {
 public:
  // At most so many entries are kept, so that a flood cannot fill the memory; the rest is counted.
  static constexpr unsigned kMaxEntries = 1000;

  VoMsgAnomalyList();
  ~VoMsgAnomalyList();
  VoMsgAnomalyList(const VoMsgAnomalyList&) = delete;
  VoMsgAnomalyList& operator=(const VoMsgAnomalyList&) = delete;

  unsigned count() const;                    // entries kept
  unsigned countAll() const;                 // entries found
  const VoMsgAnomaly* at(unsigned i) const;  // in document order; borrowed, null from count() on
  VoMsgAnomalyLevel highestLevel() const;    // of all that were found; kVoAnomalyNote when there is nothing

  void add(const VoMsgAnomaly& entry);  // what the library fills the list with

 private:
  std::vector<VoMsgAnomaly> mEntries;
  unsigned mCountAll = 0;
  VoMsgAnomalyLevel mHighest = kVoAnomalyNote;
};

namespace vomsg::detail {
// Keeps the list of a message until the next one, null for none, so that the many messages which nobody asks have no
// room for one. Any thread may call it.
void keepAnomalies(const void* message, std::unique_ptr<VoMsgAnomalyList> list);
}  // namespace vomsg::detail
