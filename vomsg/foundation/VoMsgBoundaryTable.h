// The boundaries in force while a message is parsed, as a stack with one look-up per candidate line: the test
// costs the same however many multiparts are open.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "vomsg/foundation/VoMsgBoundary.h"

namespace vomsg::detail {

struct BoundaryMatch {
  VoMsgBoundaryType type = kVoBoundaryNone;
  std::size_t depth = 0;  // index from the outermost boundary; meaningless without a match
};

class BoundaryTable {
 public:
  void push(std::string_view boundary);  // becomes the innermost one; copied
  void pop();
  std::size_t size() const { return mStack.size(); }
  bool empty() const { return mStack.empty(); }

  // Classifies one line, given without its terminator, against all boundaries, innermost first.
  BoundaryMatch match(std::string_view line) const;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept;
  };
  struct Entry {
    std::vector<std::size_t> depths;  // where this very boundary stands; the innermost last
  };

  std::vector<const std::string*> mStack;
  std::unordered_map<std::string, Entry, Hash, std::equal_to<>> mEntries;
  std::size_t mLongest = 0;
};

}  // namespace vomsg::detail
