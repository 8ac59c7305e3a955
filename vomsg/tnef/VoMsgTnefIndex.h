// Where the records of a stream lie. The records of one entity stand in a row; an entity knows its first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

namespace vomsg::detail {

class TnefIndex {
 public:
  struct Entry {
    std::uint32_t offset;  // of the level byte in the source
    std::uint16_t nameId;
    bool startsEntity;  // the first one of its entity
    bool isBroken;      // the parse ended inside
  };

  void append(const Entry& entry) { mEntries.push_back(entry); }
  // The charset of the message's code page, looked up once: every child without one of its own asks for it.
  const char* charset = nullptr;
  bool isCharsetKnown = false;

  // Whether that offset lies in a record that the parse ended in, which can only be the last.
  bool isBrokenAt(std::uint32_t offset) const {
    return !mEntries.empty() && mEntries.back().isBroken && offset >= mEntries.back().offset;
  }

  std::size_t count() const { return mEntries.size(); }
  const Entry& at(std::size_t i) const { return mEntries[i]; }

  // Where the entity's row ends whose first record is `first`.
  std::size_t rowEnd(std::size_t first) const {
    std::size_t i = first;
    while (i < mEntries.size() && (i == first || !mEntries[i].startsEntity)) ++i;
    return i;
  }
  // The first record of that name in the row, or count().
  std::size_t find(std::size_t first, std::uint16_t nameId) const {
    for (std::size_t i = first; i < mEntries.size() && (i == first || !mEntries[i].startsEntity); ++i)
      if (mEntries[i].nameId == nameId) return i;
    return mEntries.size();
  }

 private:
  std::vector<Entry> mEntries;
};

}  // namespace vomsg::detail
