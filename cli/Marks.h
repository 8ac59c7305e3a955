// What makes the library write a header block anew that nobody edited.
#pragma once

#include <vector>

#include "vomsg/entity/VoMsgEntity.h"

namespace cli {

struct Mark {
  const char* reason;
  unsigned offset;  // within the resource that the block was read from
};
// Of all header blocks of a tree, in document order.
std::vector<Mark> marksOf(VoMsgEntity* root);

}  // namespace cli
