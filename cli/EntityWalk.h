// All entities of a tree in document order, numbered, with what costs a walk to the root when it is asked of each
// entity alone: a tree may be a hundred thousand levels deep.
#pragma once

#include <vector>

#include "vomsg/entity/VoMsgEntity.h"

namespace cli {

class EntityWalk {
 public:
  explicit EntityWalk(VoMsgEntity* root);

  // Steps to the first entity, and from then on to the next one. False behind the last.
  bool next();
  VoMsgEntity* entity() const { return mpCurrent; }
  unsigned number() const { return mNumber; }  // 0 for the root
  unsigned depth() const { return static_cast<unsigned>(mStack.size()) - 1; }
  unsigned level() const { return mStack.back().level; }  // getNestingLevel()
  bool isLeaf() const { return !mpCurrent->hasChildEntity() && !mpCurrent->isMultipartEntity(); }
  bool isSigned() const;
  bool isEncrypted() const;
  bool isModified() const { return mAnyModified && mpCurrent->isModified(); }

 private:
  struct Level {
    unsigned level;
    bool belowProtection;  // this entity or one above it is multipart/signed or multipart/encrypted
  };
  void enter(VoMsgEntity* entity, Level above);
  bool mayBeProtected() const;

  VoMsgEntity* mpRoot;
  VoMsgEntity* mpCurrent = nullptr;
  unsigned mNumber = 0;
  bool mAnyModified;
  std::vector<Level> mStack;
};

// The entity that a walk gives that number, or null.
VoMsgEntity* entityByNumber(VoMsgEntity* root, unsigned number);

}  // namespace cli
