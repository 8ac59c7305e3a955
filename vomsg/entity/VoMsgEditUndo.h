// Taking an edit back: what a setter changes in one entity is put back as it was when the setter fails half-way.
#pragma once

#include <memory>

#include "vomsg/entity/VoMsgEntityInside.h"

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
  // edit succeeds.
  VoObjectStub<VoMsgEntityHeader> mHeader;
  const VoObjectStub<VoMsgEntityBody> mBody;
  const VoMsgEntityLayout mLayout;
  VoMsgEntity* const mpFirstChild;
  const std::unique_ptr<VoMsgMimeEntity> mAside;  // children on their way
  bool mStands = false;
};

}  // namespace vomsg::detail
