#include "vomsg/edit/VoMsgContentEditor.h"

#include <new>

#include "vomsg/entity/VoMsgMultipartBody.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/entity/VoMsgTreeAccess.h"

namespace vomsg::detail {

ContentEditor::Kept ContentEditor::keep() const {
  Kept kept;
  kept.header.reset(mEntity.getEntityHeader()->newCopy());
  if (!kept.header) throw std::bad_alloc();
  kept.body = mEntity.mBody;
  kept.childrenChanged = mEntity.mChildrenChanged;
  return kept;
}

void ContentEditor::restore(Kept&& kept) {
  mEntity.mHeader.setNewObject(kept.header.release());
  mEntity.mBody = kept.body;
  mEntity.mChildrenChanged = kept.childrenChanged;
}

VoErrorCode ContentEditor::makeMultipart(std::unique_ptr<VoMsgEntityHeader> header) {
  Kept kept = keep();
  mEntity.mHeader.setNewObject(header.release());
  const VoErrorCode code = mEntity._makeMultipartHeader();
  if (voFailed(code)) {
    restore(std::move(kept));
    return code;
  }
  mEntity._freeTree();
  mEntity.mBody.free();
  static_cast<VoMsgMultipartBody*>(mEntity._createEntityBody(true))->setNewBody();
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

}  // namespace vomsg::detail
