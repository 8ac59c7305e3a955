// What becomes of a character that is invalid, cut off or unknown to the target.
#pragma once

namespace vomsg::detail {

struct Replacement {
  bool allowed;  // false: the conversion stops
  char byte;
};

}  // namespace vomsg::detail
