#include "vomsg/entity/VoMsgEditUndo.h"

#include <new>
#include <utility>

#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgTreeEpoch.h"

namespace vomsg::detail {

EditUndo::EditUndo(VoMsgRfc822Entity& entity, bool holdsChildren)
    : mEntity(entity),
      mBody(Inside::body(entity)),
      mLayout(layoutOf(entity)),
      mpEdited(&Inside::readHeader(entity)),
      mWasEdited(mpEdited->isEdited()),
      mpFirstChild(entity.getChildEntity()),
      mAside(std::make_unique<VoMsgMimeEntity>()) {
  std::unique_ptr<VoMsgEntityHeader> header(mpEdited->newCopy());
  if (!header) throw std::bad_alloc();
  mHeader.adopt(std::move(header));
  if (holdsChildren) TreeAccess::moveChildren(&entity, mAside.get());
}

EditUndo::~EditUndo() {
  if (mStands) return;
  // A child that was not there is the part that the content moved to.
  if (VoMsgEntity* const part = mEntity.getChildEntity(); part && part != mpFirstChild) {
    TreeAccess::moveChildren(part, mAside.get());
    TreeAccess::freeTree(&mEntity);
  }
  if (mAside->hasChildEntity()) TreeAccess::moveChildren(mAside.get(), &mEntity);
  const VoMsgEntityHeader* const header = Inside::header(mEntity).getObject();
  if (header != mpEdited || mWasEdited || header->isEdited()) Inside::header(mEntity) = mHeader;
  noteTreeChange();
  Inside::body(mEntity) = mBody;
  layoutOf(mEntity) = mLayout;
}

}  // namespace vomsg::detail
