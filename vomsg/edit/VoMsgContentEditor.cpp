// Exchanges the content of an entity for parts. What can fail is made first; the entity changes when nothing can fail
// any more, or under an undo that puts it back.

#include "vomsg/edit/VoMsgContentEditor.h"

#include <utility>

#include "vomsg/entity/VoMsgEditUndo.h"
#include "vomsg/entity/VoMsgMultipartBody.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgTreeEpoch.h"

namespace vomsg::detail {

std::string_view ContentEditor::lineEnd() const { return Inside::textLineEnd(mEntity); }

VoErrorCode ContentEditor::moveContentToPart() { return Inside::changeSingleToMulti(mEntity); }

VoErrorCode ContentEditor::makeMultipart(std::unique_ptr<VoMsgEntityHeader> header, EditUndos& undos) {
  undos.add(mEntity);
  Inside::header(mEntity).adopt(std::move(header));
  noteTreeChange();
  VoErrorCode code = Inside::makeMultipartHeader(mEntity);
  if (voFailed(code)) return code;
  Inside::body(mEntity).free();
  static_cast<VoMsgMultipartBody*>(Inside::createBody(mEntity, true))->setNewBody();
  code = undos.settle(code);
  if (voFailed(code)) return code;
  TreeAccess::freeTree(&mEntity);
  layoutOf(mEntity).hasBodyRange = false;
  layoutOf(mEntity).childrenChanged = true;
  return kVoSuccess;
}

void ContentEditor::holdMessage(std::unique_ptr<VoMsgRfc822Message> message, std::uint32_t size) {
  Inside::source(mEntity) = Inside::source(*message);
  VoMsgEntityLayout& layout = layoutOf(mEntity);
  layout.bodyOffset = 0;
  layout.bodySize = size;
  layout.hasBodyRange = true;
  TreeAccess::append(&mEntity, message.release());
}

void ContentEditor::noteRemovals(bool (*isUnwanted)(const VoMsgEntity&)) {
  for (const VoMsgEntity* child = mEntity.getChildEntity(); child; child = child->getNextSiblingEntity())
    if (isUnwanted(*child)) Inside::noteRemoval(mEntity, *child);
}

void ContentEditor::removeChildren(bool (*isUnwanted)(const VoMsgEntity&)) {
  VoMsgEntity* before = nullptr;
  for (VoMsgEntity* child = mEntity.getChildEntity(); child;) {
    VoMsgEntity* const next = child->getNextSiblingEntity();
    if (isUnwanted(*child))
      TreeAccess::removeAfter(&mEntity, before);
    else
      before = child;
    child = next;
  }
}

}  // namespace vomsg::detail
