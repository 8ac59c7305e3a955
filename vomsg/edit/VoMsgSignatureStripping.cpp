// Signatures of messages that were edited, and the questions that editing asks of entities.

#include <memory>
#include <new>
#include <unordered_set>
#include <vector>

#include "vomsg/edit/VoMsgContentEditor.h"
#include "vomsg/entity/VoMsgEditUndo.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"

namespace {

using namespace vomsg::detail;

constexpr char kLogSource[] = "VoMsgRfc822Message";

bool isType(const VoMsgEntity& entity, std::string_view type) {
  return equalNoCase(viewOf(entity.getContentType()), type);
}

// What an attached message holds is its own affair.
signed char outsideAttachedMessages(VoMsgEntity* entity, signed char& descend) {
  if (isType(*entity, "message/rfc822")) descend = 0;
  return 1;
}

signed char outsideNestedContent(VoMsgEntity* entity, signed char& descend) {
  const VoMsgEntity* const child = entity->getChildEntity();
  if (child && child->getEntityTypeID() & kVoEntityIsMessage) descend = 0;
  return 1;
}

bool isSignature(const VoMsgEntity& entity) {
  for (const char* subtype : {"pkcs7-signature", "x-pkcs7-signature", "pgp-signature"})
    if (entity.isContentType("application", subtype)) return true;
  return false;
}

// Every entity in whose subtree a caller changed something, found in one walk: asking each signed entity by itself
// would walk a chain of signed parts once for every link.
std::unordered_set<const VoMsgEntity*> modifiedEntities(VoMsgEntity* root) {
  std::unordered_set<const VoMsgEntity*> modified;
  VoMsgEntityIterator walk(root);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) {
    if (!entity->_isModified()) continue;
    for (const VoMsgEntity* up = entity; modified.insert(up).second && up != root;) up = up->getParentEntity();
  }
  return modified;
}

// Its signatures are only noted, and go when nothing can fail any more. Others than MIME entities cannot be
// multipart/signed and have children with a type of their own.
VoErrorCode stripSignedEntity(VoMsgRfc822Entity& entity, EditUndos& undos, const char* tag) {
  undos.add(entity);
  const VoErrorCode code = entity.setHeaderValue("Content-Type", "multipart/mixed", "us-ascii", nullptr);
  if (voFailed(code)) {
    voMessageLog(1, kLogSource, "stripSignaturePart", __LINE__, tag, "Failed setHeaderValue to make multipart/mixed.");
    return code;
  }
  entity.removeHeaderParameter("Content-Type", "protocol");
  entity.removeHeaderParameter("Content-Type", "micalg");
  ContentEditor(entity).noteRemovals(isSignature);
  return code;
}

}  // namespace

VoErrorCode VoMsgRfc822Message::stripSignaturePart() {
  const char* const tag = _getUUIDString();
  VO_LOG(9, tag, "begin: stripSignaturePart");
  const std::unique_ptr<VoMsgEntityIterator> walk(new (std::nothrow) VoMsgEntityIterator(this));
  if (!walk) {
    VO_LOG(1, tag, "Can't create iterator.");
    return kVoNoMemory;
  }
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    EditUndos undos;
    std::vector<VoMsgRfc822Entity*> stripped;
    const auto modified = modifiedEntities(this);
    for (VoMsgEntity* entity = walk->first(); entity; entity = walk->next()) {
      auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity);
      if (mime && !mime->getEntityHeader()) return kVoReadFailed;  // it might be a signed one
      if (!mime || !entity->isContentType("multipart", "signed") || !modified.contains(entity)) continue;
      stripped.push_back(mime);
      const VoErrorCode code = stripSignedEntity(*mime, undos, tag);
      if (voFailed(code)) return code;
    }
    const VoErrorCode settled = undos.settle(kVoSuccess);
    if (voFailed(settled)) {
      voMessageLog(1, kLogSource, "stripSignaturePart", __LINE__, tag, "Failed to call removeChildEntityAt()");
      return settled;
    }
    // The innermost first: with a signature goes whatever lies in it.
    for (; !stripped.empty(); stripped.pop_back()) ContentEditor(*stripped.back()).removeChildren(isSignature);
    return kVoSuccess;
  });
  if (voFailed(code)) return code;
  VO_LOG(9, tag, "end  : stripSignaturePart");
  return kVoSuccess;
}

bool VoMsgRfc822Message::_isAttachment(VoMsgEntity* entity) {
  const char* const disposition = entity ? entity->getHeaderValue("Content-Disposition", "us-ascii") : nullptr;
  return disposition && equalNoCase(disposition, "attachment");
}

// A multipart/related is no alternative, whatever its "type" parameter says: its parts belong together. Kept on
// purpose: the type of the entity is compared, not the parameter.
bool VoMsgRfc822Message::_isAlternative(VoMsgEntity* entity) {
  if (!entity) return false;
  if (isType(*entity, "multipart/alternative")) return true;
  if (!isType(*entity, "multipart/related")) return false;
  if (!entity->getHeaderParameterValue("Content-Type", "type", "us-ascii")) return false;
  return isType(*entity, "multipart/alternative");
}

bool VoMsgRfc822Message::_isParentAlternative(VoMsgEntity* entity) {
  const VoMsgEntity* const parent = entity ? entity->getParentEntity() : nullptr;
  return parent && isType(*parent, "multipart/alternative");
}

bool VoMsgRfc822Message::_hasAlternative() {
  return guardedOr(false, [&] {
    VoMsgEntityIterator walk(this, outsideAttachedMessages);
    for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
      if (isType(*entity, "multipart/alternative")) return true;
    return false;
  });
}

bool VoMsgRfc822Message::_isTextCalendar(VoMsgEntity* entity) { return entity && isType(*entity, "text/calendar"); }

// An invitation that is attached as a file, or lies in a message that is attached under any type, is not what the
// reader is shown.
bool VoMsgRfc822Message::_hasTextCalendar() {
  return guardedOr(false, [&] {
    VoMsgEntityIterator walk(this, outsideNestedContent);
    for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
      if (_isTextCalendar(entity) && !_isAttachment(entity)) return true;
    return false;
  });
}
