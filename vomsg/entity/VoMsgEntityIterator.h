// Walks a tree in document order: parents before children, children in order. It never climbs above its root.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

class VoMsgEntity;

// Whether the walk stops at `entity`; `descend` (1 on entry) says whether its children are visited.
using VoMsgEntityFilter = signed char (*)(VoMsgEntity* entity, signed char& descend);

class VOMSG_API VoMsgEntityIterator {
 public:
  // Borrowed root; a null filter accepts everything.
  explicit VoMsgEntityIterator(VoMsgEntity* root, VoMsgEntityFilter filter = nullptr);

  VoMsgEntity* first();  // null when the filter accepts nothing
  VoMsgEntity* next();   // null at the end
  VoMsgEntity* current() const { return mpCurrent; }

 private:
  VoMsgEntity* step(VoMsgEntity* from) const;
  VoMsgEntity* accept(VoMsgEntity* candidate) const;

  VoMsgEntity* mpRoot;
  VoMsgEntity* mpCurrent = nullptr;
  VoMsgEntityFilter mFilter;
};
