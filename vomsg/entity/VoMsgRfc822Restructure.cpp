// Turning a leaf into a multipart: what the entity was moves, with every Content-* field, into a new first part.

#include <cstdlib>
#include <memory>
#include <vector>

#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgMultipartBody.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgLog.h"

namespace {

using namespace vomsg::detail;

constexpr char kLogSource[] = "VoMsgRfc822Entity";
constexpr std::string_view kBoundaryStart = "=_Boundary_";
constexpr unsigned kDrawnCharacters = 32;
constexpr char kBoundaryCharacters[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

bool isContentField(const VoMsgHeaderField& field) { return startsWithNoCase(viewOf(field.getName()), "content-"); }

bool holdsBoundary(VoMsgEntity* root, std::string_view boundary) {
  VoMsgEntityIterator walk(root);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
    if (viewOf(entity->getRawHeaderParameterValue("Content-Type", "boundary")) == boundary) return true;
  return false;
}

}  // namespace

// Fills `buffer` with a boundary of length - 1 characters and a NUL.
void VoMsgRfc822Entity::_createBoundary(char* buffer, unsigned length) {
  for (unsigned i = 0; i + 1 < length; ++i)
    buffer[i] = i < kBoundaryStart.size()
                    ? kBoundaryStart[i]
                    : kBoundaryCharacters[static_cast<unsigned long>(lrand48()) % (sizeof kBoundaryCharacters - 1)];
  if (length > 0) buffer[length - 1] = '\0';
}

// Makes the header block that of a multipart: type, boundary and MIME-Version, each only when it is missing.
VoErrorCode VoMsgRfc822Entity::_makeMultipartHeader() {
  if (getBoundary() && *getBoundary()) return kVoSuccess;
  char boundary[kBoundaryStart.size() + kDrawnCharacters + 1];
  VoMsgEntity* root = this;
  while (root->getParentEntity()) root = root->getParentEntity();
  do {
    _createBoundary(boundary, sizeof boundary);
  } while (holdsBoundary(root, boundary));
  if (!getHeader("MIME-Version") && voFailed(setHeaderValue("MIME-Version", "1.0", "us-ascii", nullptr)))
    return kVoContentHeaderFailed;
  if (!isMultipartEntity() && voFailed(setHeaderValue("Content-Type", "multipart/mixed", "us-ascii", nullptr)))
    return kVoContentHeaderFailed;
  return voFailed(setHeaderParameterValue("Content-Type", "boundary", boundary, "us-ascii", nullptr))
             ? kVoContentParameterFailed
             : kVoSuccess;
}

VoErrorCode VoMsgRfc822Entity::_changeSingleToMulti() {
  VO_LOG(9, _getUUIDString(), "begin: _changeSingleToMulti");
  const bool holdsBlocks = getChildEntity() && getChildEntity()->_isMultiEmbededEntity();
  if (holdsBlocks) VO_LOG(9, _getUUIDString(), "Embeded Case.");
  VoErrorCode code = _changeMultipartForEmbeded();
  if (voFailed(code)) {
    VO_LOG(1, _getUUIDString(), "Failed _changeMultipartForEmbeded.");
  } else {
    code = _makeMultipartHeader();
    if (voFailed(code)) VO_LOG(1, _getUUIDString(), "Failed _makeMultipartHeader.");
  }
  if (voFailed(code)) VO_LOG(1, _getUUIDString(), "Failed: _changeSingleToMulti.");
  VO_LOG(9, _getUUIDString(), "end  : _changeSingleToMulti");
  return code;
}

// Moves content, Content-* fields and children into a new first part. An entity that never had any content just
// becomes an empty multipart.
VoErrorCode VoMsgRfc822Entity::_changeMultipartForEmbeded() {
  VoMsgEntityHeader& header = *getEntityHeader();
  const bool isEmpty = !mHasBodyRange && !hasChildEntity() && !(mBody.getObject() && mBody.getObject()->isNewBody());
  std::unique_ptr<VoMsgMimeEntity> first;
  if (!isEmpty) {
    first = std::make_unique<VoMsgMimeEntity>();
    VoMsgEntityHeader& target = *first->getEntityHeader();
    for (unsigned i = 0; i < header.countHeaders(); ++i) {
      if (!isContentField(*header.getHeaderAt(i))) continue;
      std::unique_ptr<VoMsgHeaderField> field(header.getHeaderAt(i)->newCopy());
      if (!field || voFailed(target.appendHeader(field.get()))) return kVoRestructureFailed;
      field.release();
    }
    first->mBody = mBody;
    first->mMessageSource = mMessageSource;
    first->mBodyOffset = mBodyOffset;
    first->mBodySize = mBodySize;
    first->mHasBodyRange = mHasBodyRange;
    first->mBelowSigned = mBelowSigned;
  }
  for (unsigned i = header.countHeaders(); i-- > 0;)
    if (isContentField(*header.getHeaderAt(i))) header.removeHeaderAt(i);
  mBody.free();
  static_cast<VoMsgMultipartBody*>(_createEntityBody(true))->setNewBody();
  if (first) {
    TreeAccess::moveChildren(this, first.get());
    TreeAccess::append(this, first.release());
  }
  mChildrenChanged = true;
  return kVoSuccess;
}
