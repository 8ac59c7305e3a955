#include "vomsg/entity/VoMsgEntityIterator.h"

#include "vomsg/entity/VoMsgEntity.h"

VoMsgEntityIterator::VoMsgEntityIterator(VoMsgEntity* root, VoMsgEntityFilter filter) : mpRoot(root), mFilter(filter) {}

VoMsgEntity* VoMsgEntityIterator::first() { return mpCurrent = accept(mpRoot); }

VoMsgEntity* VoMsgEntityIterator::next() {
  if (mpCurrent) mpCurrent = accept(step(mpCurrent));
  return mpCurrent;
}

// The first entity from `candidate` on that the filter wants.
VoMsgEntity* VoMsgEntityIterator::accept(VoMsgEntity* candidate) const {
  while (candidate && mFilter) {
    signed char descend = 1;
    if (mFilter(candidate, descend)) break;
    candidate = step(candidate);
  }
  return candidate;
}

VoMsgEntity* VoMsgEntityIterator::step(VoMsgEntity* from) const {
  signed char descend = 1;
  if (mFilter) mFilter(from, descend);
  if (descend == 1 && from->getChildEntity()) return from->getChildEntity();
  for (; from && from != mpRoot; from = from->getParentEntity())
    if (VoMsgEntity* const sibling = from->getNextSiblingEntity()) return sibling;
  return nullptr;
}
