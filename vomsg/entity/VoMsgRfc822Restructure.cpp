// Turning a leaf into a multipart: what the entity was moves, with every Content-* field, into a new first part.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "vomsg/entity/VoMsgBodyScanner.h"
#include "vomsg/entity/VoMsgEditUndo.h"
#include "vomsg/entity/VoMsgEntityInside.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgMultipartBody.h"
#include "vomsg/entity/VoMsgSingleBody.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgKeyedHash.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgRandomDraws.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/foundation/VoMsgTreeEpoch.h"
#include "vomsg/header/VoMsgHeaderField.h"

namespace {

using namespace vomsg::detail;

constexpr char kLogSource[] = "VoMsgRfc822Entity";
constexpr std::string_view kBoundaryStart = "=_Boundary_";
constexpr unsigned kDrawnCharacters = 32;
constexpr char kBoundaryCharacters[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

bool isContentField(const VoMsgHeaderField& field) { return startsWithNoCase(viewOf(field.getName()), "content-"); }

// Boundaries come from mail: hashed with a secret, no sender can choose many that collide.
struct KeyedHasher {
  std::size_t operator()(std::string_view text) const {
    return static_cast<std::size_t>(keyedHash(processHashKey(), text));
  }
};
using BoundarySet = std::unordered_set<std::string_view, KeyedHasher>;

// The boundaries that the multiparts of a subtree declare. Borrowed from the header blocks.
BoundarySet boundariesIn(VoMsgEntity* root) {
  BoundarySet boundaries;
  VoMsgEntityIterator walk(root);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
    if (const auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity))
      if (const std::string_view boundary = mime->_declaredBoundary(); !boundary.empty()) boundaries.insert(boundary);
  return boundaries;
}

// Sets `found[depth]` for each boundary of which a delimiter line starts in [begin, end).
void findDelimiters(VoMsgBufferedReader* reader, std::uint64_t begin, std::uint64_t end,
                    const BoundaryTable& boundaries, std::vector<bool>& found) {
  if (!reader || begin >= end || !moveTo(*reader, begin)) return;
  for (BodyEnd at = findBodyEnd(*reader, boundaries); at.match.type != kVoBoundaryNone && at.lineOffset < end;
       at = findBodyEnd(*reader, boundaries))
    found[at.match.depth] = true;
}

// Whether a multipart below has the boundary of `entity`, for each multipart from `top` down: those that are alone with
// theirs are told so, in one walk.
void findLoneBoundaries(VoMsgEntity& top) {
  struct Open {
    VoMsgEntity* entity;
    std::string_view boundary;  // empty unless it is a multipart
    std::size_t outer;          // one more than the index of the next one outwards with that boundary, or 0
    bool isAlone;
  };
  std::vector<Open> open;
  std::unordered_map<std::string_view, std::size_t, KeyedHasher> innermost;  // one more than its index
  const auto close = [&] {
    const Open& last = open.back();
    if (!last.boundary.empty()) {
      innermost[last.boundary] = last.outer;
      if (last.isAlone) layoutOf(dynamic_cast<VoMsgRfc822Entity&>(*last.entity)).aloneInEpoch = boundaryEpoch();
    }
    open.pop_back();
  };
  VoMsgEntityIterator walk(&top);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) {
    while (!open.empty() && open.back().entity != entity->getParentEntity()) close();
    const auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity);
    const std::string_view boundary = mime ? mime->_declaredBoundary() : std::string_view();
    std::size_t outer = 0;
    if (!boundary.empty()) {
      outer = std::exchange(innermost[boundary], open.size() + 1);
      if (outer > 0) open[outer - 1].isAlone = false;
    }
    open.push_back({entity, boundary, outer, true});
  }
  while (!open.empty()) close();
}

// Whether new content in the subtree of `child`, or the source that it was read from, may hold a delimiter line. Mostly
// there is no line of that kind, and nothing around needs to be asked.
bool mayBringDelimiters(VoMsgEntity* child) {
  VoMsgEntityIterator walk(child);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) {
    auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity);
    if (!mime) continue;
    if (layoutOf(*mime).hasBodyRange && (entity == child || !layoutOf(*mime).inPlace)) return true;
    const VoMsgEntityBody* const body = Inside::body(*mime).getObject();
    const bool isNew = body && body->isNewBody() && !body->isMultipart();
    const VoMsgResourceLocator* const content =
        isNew ? static_cast<const VoMsgSingleBody*>(body)->getNewContent() : nullptr;
    const std::unique_ptr<VoMsgBufferedReader> reader(content ? content->getInputStream(VoMsgResourceLocator::dataPart)
                                                              : nullptr);
    if (!reader || !ReaderWindow::fill(*reader)) continue;
    const std::string_view window = ReaderWindow::buffered(*reader);
    const char* const end = window.data() + window.size();
    const bool isWhole = window.size() == content->getSize(VoMsgResourceLocator::dataPart);
    if (!isWhole || window.front() == '-' || findHyphenLine(window.data() + 1, end) != end) return true;
  }
  return false;
}

}  // namespace

// Fills `buffer` with a boundary of length - 1 characters and a NUL.
void VoMsgRfc822Entity::_createBoundary(char* buffer, unsigned length) {
  RandomDraws random;
  for (unsigned i = 0; i + 1 < length; ++i)
    buffer[i] = i < kBoundaryStart.size() ? kBoundaryStart[i]
                                          : kBoundaryCharacters[random.next() % (sizeof kBoundaryCharacters - 1)];
  if (length > 0) buffer[length - 1] = '\0';
}

// Makes the header block that of a multipart: type, boundary and MIME-Version, each only when it is missing.
VoErrorCode VoMsgRfc822Entity::_makeMultipartHeader() {
  VoErrorCode code = isMultipartEntity() ? kVoSuccess : _editMultipartHeader();
  if (voFailed(code)) {
    VO_LOG(1, _getUUIDString(), "Failed to call _editMultipartHeader.");
    return code;
  }
  if (getBoundary() && *getBoundary()) return kVoSuccess;
  code = _editMultipartHeaderParameter();
  if (voFailed(code)) VO_LOG(1, _getUUIDString(), "Failed to call _editMultipartHeaderParameter.");
  return code;
}

VoErrorCode VoMsgRfc822Entity::_editMultipartHeader() {
  if (!getHeader("MIME-Version") && voFailed(setHeaderValue("MIME-Version", "1.0", "us-ascii", nullptr)))
    return kVoContentHeaderFailed;
  return voFailed(setHeaderValue("Content-Type", "multipart/mixed", "us-ascii", nullptr)) ? kVoContentHeaderFailed
                                                                                          : kVoSuccess;
}

VoErrorCode VoMsgRfc822Entity::_editMultipartHeaderParameter() {
  char boundary[kBoundaryStart.size() + kDrawnCharacters + 1];
  VoMsgEntity* root = this;
  while (root->getParentEntity()) root = root->getParentEntity();
  const auto present = boundariesIn(root);
  do {
    _createBoundary(boundary, sizeof boundary);
  } while (present.contains(boundary));
  return voFailed(setHeaderParameterValue("Content-Type", "boundary", boundary, "us-ascii", nullptr))
             ? kVoContentParameterFailed
             : kVoSuccess;
}

// Without looking at the header blocks of leaves, which need not be made for this.
std::string_view VoMsgRfc822Entity::_declaredBoundary() const {
  return mLayout.isMultipartBody || mHeader.getObject() ? viewOf(getBoundary()) : std::string_view();
}

// A child that was made elsewhere may hold multiparts with the boundary of one around it, as when a message is
// attached to its own copy; its delimiters would then end the outer one's parts. So would a delimiter that is added
// behind a part whose multipart has the same boundary and no end; and so would one in a text, or in a message that was
// set as content.
VoErrorCode VoMsgRfc822Entity::_separateBoundaries(VoMsgEntity* child, EditUndos& undos) {
  VoErrorCode code = kVoSuccess;
  const auto renew = [&undos](VoMsgRfc822Entity& multipart) {
    undos.add(multipart);
    return multipart._editMultipartHeaderParameter();
  };
  if (mLayout.aloneInEpoch != boundaryEpoch()) {
    // What was read is looked through as a whole, so that parts can be added at each of many depths; a multipart that
    // was made later has little below it.
    VoMsgEntity* top = this;
    while (mLayout.hasHeaderRange && top->getParentEntity()) top = top->getParentEntity();
    findLoneBoundaries(*top);
    if (mLayout.aloneInEpoch != boundaryEpoch()) code = renew(*this);
    mLayout.aloneInEpoch = voFailed(code) ? 0 : boundaryEpoch();
  }
  const auto present = boundariesIn(child);
  if (present.empty() && !mayBringDelimiters(child)) return code;
  std::vector<VoMsgRfc822Entity*> around;
  for (VoMsgEntity* up = this; up; up = up->getParentEntity())
    if (auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(up); mime && !mime->_declaredBoundary().empty())
      around.push_back(mime);
  std::reverse(around.begin(), around.end());
  BoundaryTable boundaries;
  std::vector<bool> clashes;
  for (const VoMsgRfc822Entity* mime : around) {
    boundaries.push(mime->_declaredBoundary());
    clashes.push_back(present.contains(mime->_declaredBoundary()));
  }
  VoMsgEntityIterator walk(child);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
    if (const auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity))
      mime->_findDelimiters(boundaries, clashes, entity == child);
  std::unordered_set<std::string, KeyedHasher> clashing;  // of equal boundaries only the innermost one is found
  for (std::size_t i = 0; i < around.size(); ++i)
    if (clashes[i]) clashing.emplace(around[i]->_declaredBoundary());
  for (std::size_t i = 0; i < around.size() && !voFailed(code); ++i)
    if (clashing.contains(std::string(around[i]->_declaredBoundary()))) code = renew(*around[i]);
  return code;
}

// Looks through the bytes that this entity brings along: new content, or the source that it is the first one from.
void VoMsgRfc822Entity::_findDelimiters(const BoundaryTable& boundaries, std::vector<bool>& found, bool isFirst) const {
  const VoMsgEntityBody* const body = mBody.getObject();
  if (body && body->isNewBody() && !body->isMultipart()) {
    const VoMsgResourceLocator* const content = static_cast<const VoMsgSingleBody*>(body)->getNewContent();
    const unsigned size = content ? content->getSize(VoMsgResourceLocator::dataPart) : 0;
    const std::unique_ptr<VoMsgBufferedReader> reader(size > 0 ? content->getInputStream(VoMsgResourceLocator::dataPart)
                                                               : nullptr);
    findDelimiters(reader.get(), 0, size, boundaries, found);
  }
  if (!mLayout.hasBodyRange || !(isFirst || !mLayout.inPlace)) return;
  const OpenSource source(mMessageSource.getObject());
  findDelimiters(source.reader(), mLayout.hasHeaderRange ? mLayout.headerOffset : mLayout.bodyOffset, mLayout.bodyEnd(),
                 boundaries, found);
}

// Puts the fields back that described the leaf, when it could not become a multipart after all.
void VoMsgRfc822Entity::_removeMultipartHeader(EditUndos& undos) { undos.takeBackLast(); }

VoErrorCode VoMsgRfc822Entity::_changeSingleToMulti() {
  const char* const tag = _getUUIDString();
  VO_LOG(9, tag, "begin: _changeSingleToMulti");
  if (getChildEntity() && getChildEntity()->_isMultiEmbededEntity()) VO_LOG(9, tag, "Embeded Case.");
  EditUndos undos;
  undos.add(*this);
  std::unique_ptr<VoMsgMimeEntity> first;
  VoErrorCode code = _changeMultipartForEmbeded(first);
  if (voFailed(code)) {
    VO_LOG(1, tag, "Failed _changeMultipartForEmbeded.");
  } else if (voFailed(code = _makeMultipartHeader())) {
    VO_LOG(1, tag, "Failed _makeMultipartHeader.");
  }
  if (voFailed(code)) {
    _removeMultipartHeader(undos);
    VO_LOG(1, tag, "Failed: _changeSingleToMulti.");
    return code;
  }
  mBody.free();
  static_cast<VoMsgMultipartBody*>(_createEntityBody(true))->setNewBody();
  code = undos.settle(code);
  if (voFailed(code)) return code;
  if (first) {
    TreeAccess::moveChildren(this, first.get());
    TreeAccess::append(this, first.release());
  }
  mLayout.childrenChanged = true;
  VO_LOG(9, tag, "end  : _changeSingleToMulti");
  return kVoSuccess;
}

// Moves the Content-* fields to a new first part that shares the body; the children follow once nothing can fail any
// more. An entity that never had any content just becomes an empty multipart. A multipart type that a caller gave to a
// leaf stays.
VoErrorCode VoMsgRfc822Entity::_changeMultipartForEmbeded(std::unique_ptr<VoMsgMimeEntity>& first) {
  VoMsgEntityHeader& header = _header();
  const bool isEmpty =
      !mLayout.hasBodyRange && !hasChildEntity() && !(mBody.getObject() && mBody.getObject()->isNewBody());
  const bool wasEdited = header.isEdited();
  const bool keepsType = isMultipartEntity() && !mLayout.isMultipartBody;
  const auto moves = [keepsType](const VoMsgHeaderField& field) {
    return isContentField(field) && !(keepsType && equalNoCase(viewOf(field.getName()), "Content-Type"));
  };
  if (!isEmpty) {
    first = std::make_unique<VoMsgMimeEntity>();
    VoMsgEntityHeader& target = first->_header();
    for (unsigned i = 0; i < header.countHeaders(); ++i) {
      if (!moves(*header.getHeaderAt(i))) continue;
      std::unique_ptr<VoMsgHeaderField> field(header.getHeaderAt(i)->newCopy());
      if (!field || voFailed(target._moveHeader(field.get()))) return kVoRestructureFailed;
      field.release();
    }
    first->mBody = mBody;
    first->mMessageSource = mMessageSource;
    first->mLayout = mLayout.ofMovedBody();
    // Moving is no edit: a signature over the content still holds.
    if (!wasEdited) target.setUnedited();
  }
  for (unsigned i = header.countHeaders(); i-- > 0;)
    if (moves(*header.getHeaderAt(i))) header.removeHeaderAt(i);
  return kVoSuccess;
}
