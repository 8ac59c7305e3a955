// Taking an edit back: what a setter changes in one entity is put back as it was when the setter fails half-way.
#pragma once

#include <deque>
#include <memory>

#include "vomsg/entity/VoMsgEntityInside.h"
#include "vomsg/foundation/VoMsgShortage.h"

class VoMsgMimeEntity;

namespace vomsg::detail {

// Takes back what is done to one entity while it lives, unless it is told to let it stand: an edit that fails half-way,
// or throws, leaves no trace. Making one throws when memory runs out; taking back cannot fail.
class EditUndo {
 public:
  // `holdsChildren`: the attachments that were found in the text of a leaf are set aside, for new content drops them.
  explicit EditUndo(VoMsgRfc822Entity& entity, bool holdsChildren = false);
  ~EditUndo();
  EditUndo(const EditUndo&) = delete;
  EditUndo& operator=(const EditUndo&) = delete;
  void letStand() { mStands = true; }

 private:
  VoMsgRfc822Entity& mEntity;
  // A deep copy, made while the entity keeps its own block: pointers that a caller holds into that stay good when the
  // edit succeeds, and when it fails before it came to the block.
  VoObjectStub<VoMsgEntityHeader> mHeader;
  const VoObjectStub<VoMsgEntityBody> mBody;
  const VoMsgEntityLayout mLayout;
  const VoMsgEntityHeader* const mpEdited;  // the entity's own block
  const bool mWasEdited;
  VoMsgEntity* const mpFirstChild;
  const std::unique_ptr<VoMsgMimeEntity> mAside;  // children on their way
  bool mStands = false;
};

// The same for what is done to several entities, and to one of them more than once: taken back in reverse. What cannot
// be done in full for want of memory or a descriptor, although its code says success, is taken back as well.
class EditUndos {
 public:
  EditUndos() = default;
  ~EditUndos() {
    while (!mUndos.empty()) mUndos.pop_back();
  }
  EditUndos(const EditUndos&) = delete;
  EditUndos& operator=(const EditUndos&) = delete;
  void add(VoMsgRfc822Entity& entity, bool holdsChildren = false) { mUndos.emplace_back(entity, holdsChildren); }
  void takeBackLast() { mUndos.pop_back(); }
  // The code of what was done so far: a success only when nothing was refused on the way.
  VoErrorCode checked(VoErrorCode code) const { return !voFailed(code) && mShortage.seen() ? mShortage.code() : code; }
  void letStand() {
    for (EditUndo& undo : mUndos) undo.letStand();
  }
  // The end of the edit: everything stands, unless it failed.
  VoErrorCode settle(VoErrorCode code) {
    code = checked(code);
    if (!voFailed(code)) letStand();
    return code;
  }

 private:
  ShortageWatch mShortage;
  std::deque<EditUndo> mUndos;
};

}  // namespace vomsg::detail
