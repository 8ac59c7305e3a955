#include "vomsg/edit/VoMsgContentEditor.h"

#include <new>
#include <utility>

#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgMultipartBody.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgGuard.h"

namespace vomsg::detail {

EditUndo::EditUndo(VoMsgRfc822Entity& entity, bool holdsChildren)
    : mEntity(entity),
      mBody(entity.mBody),
      mpFirstChild(entity.getChildEntity()),
      mAside(std::make_unique<VoMsgMimeEntity>()),
      mIsMultipartBody(entity.mIsMultipartBody),
      mChildrenChanged(entity.mChildrenChanged) {
  std::unique_ptr<VoMsgEntityHeader> header(entity.getEntityHeader()->newCopy());
  if (!header) throw std::bad_alloc();
  mHeader.setNewObject(header.get());
  static_cast<void>(header.release());
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
  mEntity.mHeader = mHeader;
  mEntity.mBody = mBody;
  mEntity.mIsMultipartBody = mIsMultipartBody;
  mEntity.mChildrenChanged = mChildrenChanged;
}

std::string_view ContentEditor::lineEnd() const {
  const OpenSource source(mEntity.mMessageSource.getObject());
  return mEntity._lineEnd(source.reader());
}

VoErrorCode ContentEditor::makeMultipart(std::unique_ptr<VoMsgEntityHeader> header) {
  EditUndo undo(mEntity);
  mEntity.mHeader.setNewObject(header.get());
  static_cast<void>(header.release());
  const VoErrorCode code = mEntity._makeMultipartHeader();
  if (voFailed(code)) return code;
  mEntity.mBody.free();
  static_cast<VoMsgMultipartBody*>(mEntity._createEntityBody(true))->setNewBody();
  undo.letStand();
  mEntity._freeTree();
  mEntity.mHasBodyRange = false;
  mEntity.mChildrenChanged = true;
  return kVoSuccess;
}

void ContentEditor::holdMessage(std::unique_ptr<VoMsgRfc822Message> message, std::uint32_t size) {
  mEntity.mMessageSource = static_cast<VoMsgRfc822Entity&>(*message).mMessageSource;
  mEntity.mBodyOffset = 0;
  mEntity.mBodySize = size;
  mEntity.mHasBodyRange = true;
  TreeAccess::append(&mEntity, message.release());
}

VoErrorCode ContentEditor::removeChildren(bool (*isUnwanted)(const VoMsgEntity&)) {
  return guarded([&] {
    VoMsgEntity* before = nullptr;
    for (VoMsgEntity* child = mEntity.getChildEntity(); child;) {
      VoMsgEntity* const next = child->getNextSiblingEntity();
      if (isUnwanted(*child)) {
        mEntity._noteRemoval(*child);
        TreeAccess::removeAfter(&mEntity, before);
      } else {
        before = child;
      }
      child = next;
    }
    return kVoSuccess;
  });
}

}  // namespace vomsg::detail
