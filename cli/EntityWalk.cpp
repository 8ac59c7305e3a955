#include "cli/EntityWalk.h"

namespace cli {

EntityWalk::EntityWalk(VoMsgEntity* root) : mpRoot(root), mAnyModified(root != nullptr && root->isModified()) {}

void EntityWalk::enter(VoMsgEntity* entity, Level above) {
  const bool protects = entity->isContentType("multipart", "signed") || entity->isContentType("multipart", "encrypted");
  mStack.push_back({above.level, above.belowProtection || protects});
  mpCurrent = entity;
}

bool EntityWalk::next() {
  if (mpCurrent == nullptr) {
    if (!mStack.empty() || mpRoot == nullptr) return false;
    enter(mpRoot, {0, false});
    return true;
  }
  ++mNumber;
  if (VoMsgEntity* child = mpCurrent->getChildEntity()) {
    const bool isMessage = (mpCurrent->getEntityTypeID() & kVoEntityIsMessage) != 0 && mpCurrent != mpRoot;
    enter(child, {mStack.back().level + (isMessage ? 1 : 0), mStack.back().belowProtection});
    return true;
  }
  for (; mpCurrent != mpRoot; mpCurrent = mpCurrent->getParentEntity()) {
    const unsigned level = mStack.back().level;
    mStack.pop_back();
    if (VoMsgEntity* sibling = mpCurrent->getNextSiblingEntity()) {
      enter(sibling, {level, mStack.back().belowProtection});
      return true;
    }
  }
  mpCurrent = nullptr;
  return false;
}

// Only these can be signed or encrypted by themselves; for all others what is above them decides.
bool EntityWalk::mayBeProtected() const {
  return mStack.back().belowProtection || mpCurrent->isContentType("application", "pkcs7-mime") ||
         mpCurrent->isContentType("application", "x-pkcs7-mime") ||
         mpCurrent->isContentType("application", "octet-stream");
}
bool EntityWalk::isSigned() const { return mayBeProtected() && mpCurrent->isSignedPart(); }
bool EntityWalk::isEncrypted() const { return mayBeProtected() && mpCurrent->isEncryptedPart(); }

VoMsgEntity* entityByNumber(VoMsgEntity* root, unsigned number) {
  EntityWalk walk(root);
  while (walk.next()) {
    if (walk.number() == number) return walk.entity();
  }
  return nullptr;
}

}  // namespace cli
