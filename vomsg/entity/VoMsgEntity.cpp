#include "vomsg/entity/VoMsgEntity.h"

#include <atomic>
#include <string>
#include <string_view>

#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgShortage.h"
#include "vomsg/foundation/VoMsgTreeEpoch.h"

namespace {

using namespace vomsg::detail;

std::atomic<std::uint32_t> gLastEntityID = 0;

unsigned addressBits(const void* pointer) { return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(pointer)); }

bool isType(const VoMsgEntity& entity, std::string_view type) {
  const char* const own = entity.getContentType();
  return own && equalNoCase(own, type);
}

bool isPkcs7Mime(const VoMsgEntity& entity) {
  return isType(entity, "application/pkcs7-mime") || isType(entity, "application/x-pkcs7-mime");
}

bool hasSmimeType(const VoMsgEntity& entity, std::string_view type) {
  const char* const own = entity.getHeaderParameterValue("Content-Type", "smime-type", "us-ascii");
  return own && equalNoCase(own, type);
}

bool isNamedP7m(const VoMsgEntity& entity) {
  const char* name = entity.getHeaderParameterValue("Content-Disposition", "filename", "us-ascii");
  if (!name) name = entity.getHeaderParameterValue("Content-Type", "name", "us-ascii");
  return name && endsWithNoCase(name, ".p7m");
}

}  // namespace

VoMsgEntity::VoMsgEntity() : mEntityID(++gLastEntityID) {}

VoMsgEntity::~VoMsgEntity() { _freeTree(); }

unsigned VoMsgEntity::getIndex() {
  unsigned index = 0;
  if (mpParent)
    for (const VoMsgEntity* child = mpParent->mpCild; child; child = child->mpSibling, ++index)
      if (child == this) return index;
  return 0;
}

// ---- what climbing to the root tells

bool VoMsgEntity::isKept(bool withProtection) const {
  return mAncestry.epoch == treeEpoch() && (mAncestry.hasProtection || !withProtection);
}

void VoMsgEntity::learnFrom(const VoMsgEntity* parent, bool withProtection) {
  Ancestry learnt;
  learnt.root = parent ? parent->mAncestry.root : this;
  learnt.epoch = treeEpoch();
  const bool isInMessage = parent && parent->mpParent && (parent->getEntityTypeID() & kVoEntityIsMessage);
  learnt.level = parent ? (parent->mAncestry.level + isInMessage) & 0x1FFFFFFF : 0;
  if (withProtection) {
    learnt.hasProtection = 1;
    learnt.inSigned = (parent && parent->mAncestry.inSigned) || isType(*this, "multipart/signed");
    learnt.inEncrypted = (parent && parent->mAncestry.inEncrypted) || isType(*this, "multipart/encrypted");
  }
  mAncestry = learnt;
}

// Up to the root or to the first entity that knows, then down again, telling everyone on the way. The memos on the way
// are void, so they can hold the way down meanwhile.
const VoMsgEntity::Ancestry& VoMsgEntity::ancestry(bool withProtection) {
  const ShortageWatch shortage;
  VoMsgEntity* below = nullptr;
  VoMsgEntity* entity = this;
  for (; entity && !entity->isKept(withProtection); entity = entity->mpParent) {
    entity->mAncestry.epoch = 0;
    entity->mAncestry.root = below;
    below = entity;
  }
  for (const VoMsgEntity* parent = entity; below; parent = entity) {
    entity = below;
    below = entity->mAncestry.root;
    entity->learnFrom(parent, withProtection);
  }
  if (shortage.seen()) noteTreeChange();  // a type could not be read now; next time perhaps it can
  return mAncestry;
}

unsigned VoMsgEntity::getNestingLevel() { return ancestry(false).level; }
VoMsgEntity* VoMsgEntity::_getRootEntity() { return ancestry(false).root; }

bool VoMsgEntity::hasChildEntity() const { return mpCild != nullptr; }

unsigned VoMsgEntity::countChildEntity() const {
  unsigned count = 0;
  for (const VoMsgEntity* child = mpCild; child; child = child->mpSibling) ++count;
  return count;
}

VoMsgEntity* VoMsgEntity::getParentEntity() const { return mpParent; }
VoMsgEntity* VoMsgEntity::getNextSiblingEntity() const { return mpSibling; }
VoMsgEntity* VoMsgEntity::getChildEntity() const { return mpCild; }

VoMsgEntity* VoMsgEntity::getChildEntityAt(unsigned i) const {
  VoMsgEntity* child = mpCild;
  while (child && i-- > 0) child = child->mpSibling;
  return child;
}

// A prefix test on purpose: a subtype that merely begins like the one asked for matches too.
bool VoMsgEntity::isContentType(const char* type, const char* subtype) const {
  const char* const own = getContentType();
  if (!own || !type) return false;
  const std::string_view text(own);
  const std::string_view wanted(type);
  if (!startsWithNoCase(text, wanted) || text.size() <= wanted.size() || text[wanted.size()] != '/') return false;
  return startsWithNoCase(text.substr(wanted.size() + 1), viewOf(subtype));
}

bool VoMsgEntity::isSignedPart() {
  if (isPkcs7Mime(*this) && (hasSmimeType(*this, "signed-data") || isNamedP7m(*this))) return true;
  return ancestry(true).inSigned;
}

// Unlike the test for signatures, octet streams named *.p7m count, and the entity itself being the
// multipart/encrypted does not: its parts are what is encrypted.
bool VoMsgEntity::isEncryptedPart() {
  if ((isPkcs7Mime(*this) || isType(*this, "application/octet-stream")) &&
      (hasSmimeType(*this, "enveloped-data") || isNamedP7m(*this)))
    return true;
  return mpParent && mpParent->ancestry(true).inEncrypted;
}

bool VoMsgEntity::isModified() {
  VoMsgEntityIterator walk(this);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
    if (entity->_isModified()) return true;
  return false;
}

unsigned VoMsgEntity::countUserAddress(const char*) const { return 0; }
VoMsgUserAddress* VoMsgEntity::getUserAddressAt(const char*, unsigned) const { return nullptr; }
VoErrorCode VoMsgEntity::appendUserAddress(const char*, VoMsgUserAddress*) { return kVoNotSupported; }
VoErrorCode VoMsgEntity::appendUserAddress(const char*, const char*) { return kVoNotSupported; }
VoErrorCode VoMsgEntity::insertUserAddressAt(const char*, VoMsgUserAddress*, unsigned) { return kVoNotSupported; }
VoErrorCode VoMsgEntity::insertUserAddressAt(const char*, const char*, unsigned) { return kVoNotSupported; }
VoErrorCode VoMsgEntity::removeUserAddressAt(const char*, unsigned) { return kVoNotSupported; }

void VoMsgEntity::_dumpEntityInf(std::FILE* out) {
  if (!out) return;
  std::fprintf(out, "[ %s ]\n\n", _getEntityName());
  std::fprintf(out, "Current           : H'%.8x\n", addressBits(this));
  std::fprintf(out, "mpParent          : H'%.8x\n", addressBits(mpParent));
  std::fprintf(out, "mpSibling         : H'%.8x\n", addressBits(mpSibling));
  std::fprintf(out, "mpCild            : H'%.8x\n", addressBits(mpCild));
}

VoMsgEntity* VoMsgEntity::createWrapperEntity() { return nullptr; }
bool VoMsgEntity::_isMultiEmbededEntity() { return getEntityTypeID() == kVoEntityMultiEmbeded; }

VoMsgBufferedReader* VoMsgEntity::getContextSource(int& err) {
  err = static_cast<int>(kVoSuccess);
  return nullptr;
}

VoErrorCode VoMsgEntity::_writeBoundaryBegin(VoMsgBufferedWriter*) { return kVoSuccess; }
VoErrorCode VoMsgEntity::_writeBoundaryEnd(VoMsgBufferedWriter*) { return kVoSuccess; }

VoErrorCode VoMsgEntity::_writeEntityToResource(VoMsgEntity* entity, VoMsgBufferedWriter* writer) {
  return entity ? entity->_writeToResource(writer) : kVoBadArgument;
}

const char* VoMsgEntity::_getUUIDString() {
  VoMsgEntity* const root = _getRootEntity();
  return root == this ? "" : root->_getUUIDString();
}

VoMsgEntity* VoMsgEntity::getChildEntityByID(std::uint32_t id) {
  VoMsgEntityIterator walk(this);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
    if (entity->mEntityID == id) return entity;
  return nullptr;
}

void VoMsgEntity::_appendChild(VoMsgEntity* child) {
  if (!child) return;
  for (const VoMsgEntity* added = child; added; added = added->mpSibling)
    if (added->mAncestry.epoch != 0) noteTreeChange();
  (mpLastChild ? mpLastChild->mpSibling : mpCild) = child;
  for (; child; child = child->mpSibling) {
    child->mpParent = this;
    mpLastChild = child;
  }
}

bool VoMsgEntity::_insertChildAt(VoMsgEntity* child, unsigned i) {
  if (!child) return false;
  VoMsgEntity* const before = i == 0 ? nullptr : getChildEntityAt(i - 1);
  if (i > 0 && !before) return false;
  if (child->mAncestry.epoch != 0) noteTreeChange();
  VoMsgEntity*& link = before ? before->mpSibling : mpCild;
  child->mpSibling = link;
  child->mpParent = this;
  link = child;
  if (!child->mpSibling) mpLastChild = child;
  return true;
}

bool VoMsgEntity::_removeChildAt(unsigned i) {
  VoMsgEntity* const before = i == 0 ? nullptr : getChildEntityAt(i - 1);
  return (i == 0 || before) && _removeChildAfter(before);
}

bool VoMsgEntity::_removeChildAfter(VoMsgEntity* before) {
  VoMsgEntity*& link = before ? before->mpSibling : mpCild;
  VoMsgEntity* const child = link;
  if (!child) return false;
  link = child->mpSibling;
  if (mpLastChild == child) mpLastChild = before;
  child->mpParent = nullptr;
  child->mpSibling = nullptr;
  delete child;
  return true;
}

// Trees from mail can be a hundred thousand levels deep, so this walks instead of recursing: down to a leaf,
// destroy it, on to its sibling, or up to the parent, which has become a leaf by then.
void VoMsgEntity::_freeTree() {
  VoMsgEntity* entity = mpCild;
  mpCild = mpLastChild = nullptr;
  while (entity) {
    if (entity->mpCild) {
      entity = entity->mpCild;
      continue;
    }
    VoMsgEntity* const parent = entity->mpParent == this ? nullptr : entity->mpParent;
    VoMsgEntity* const sibling = entity->mpSibling;
    delete entity;
    if (sibling) {
      entity = sibling;
    } else {
      entity = parent;
      if (parent) parent->mpCild = parent->mpLastChild = nullptr;
    }
  }
}

void vomsg::detail::TreeAccess::moveChildren(VoMsgEntity* from, VoMsgEntity* to) {
  VoMsgEntity* const first = from->mpCild;
  noteTreeChange();
  from->mpCild = from->mpLastChild = nullptr;
  to->_appendChild(first);
}
