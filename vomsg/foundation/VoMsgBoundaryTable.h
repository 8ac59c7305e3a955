// The boundaries in force while a message is parsed, as a stack with one look-up per candidate line: the test
// costs the same however many multiparts are open. It answers as voGetBoundaryType asked for each boundary,
// innermost first, would.
//
// Few boundaries, which is what real mail has, are compared one by one; more are found through a hash table keyed
// by a secret of this process, so that no sender can choose boundaries that collide. Making a table costs
// nothing until the first push, and clear() keeps what it has grown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/foundation/VoMsgBoundary.h"

namespace vomsg::detail {

struct BoundaryMatch {
  VoMsgBoundaryType type = kVoBoundaryNone;
  std::size_t depth = 0;  // index from the outermost boundary; meaningless without a match
};

class BoundaryTable {
 public:
  void push(std::string_view boundary);  // becomes the innermost one; copied. Throws where 4 GiB are no room for all
  void pop();                            // drops the innermost one; nothing to do when there is none
  void clear();                          // drops all, for the next message
  std::size_t size() const { return mStack.size(); }
  bool empty() const { return mStack.empty(); }
  // Bytes of the longest boundary in force; 0 without any.
  std::size_t longest() const { return mStack.empty() ? 0 : mStack.back().longest; }

  // Classifies one line, given without its terminator, against all boundaries, innermost first.
  BoundaryMatch match(std::string_view line) const {
    if (line.size() < 2 || line[0] != '-' || line[1] != '-' || mStack.empty()) return {};
    return matchDelimiter(line);
  }

 private:
  // A message is smaller than 4 GiB, and a hundred thousand entries had better be small in 64 bits too.
  using Index = std::uint32_t;
  static constexpr Index kNone = static_cast<Index>(-1);

  struct Entry {
    Index begin;  // into mBytes
    Index length;
    Index longest;       // of this boundary and those around it
    Index outer;         // the next equal boundary outwards, or kNone; of hashed entries only
    std::uint64_t hash;  // of hashed entries only
  };

  BoundaryMatch matchDelimiter(std::string_view line) const;
  std::string_view bytesOf(const Entry& entry) const { return {mBytes.data() + entry.begin, entry.length}; }
  Index find(std::string_view boundary) const;  // the innermost equal one, or kNone
  std::size_t slotOf(std::string_view boundary, std::uint64_t hash) const;
  void enter(Index index);
  void rehash(std::size_t slots);

  std::string mBytes;  // all boundaries, one behind the other
  std::vector<Entry> mStack;
  // Open addressing; a slot holds one more than the index of the innermost boundary of its text, or 0. Empty while
  // the boundaries are few. As boundaries leave in the reverse of the order in which they came, a slot is simply
  // emptied: whatever once had to walk past it has left before.
  std::vector<Index> mSlots;
};

}  // namespace vomsg::detail
