// Linking and unlinking entities for the parsers, which build trees without marking anything as changed.
#pragma once

#include "vomsg/entity/VoMsgEntity.h"

namespace vomsg::detail {

struct TreeAccess {
  static void append(VoMsgEntity* parent, VoMsgEntity* child) { parent->_appendChild(child); }
  static bool insertAt(VoMsgEntity* parent, VoMsgEntity* child, unsigned i) { return parent->_insertChildAt(child, i); }
  static bool removeAt(VoMsgEntity* parent, unsigned i) { return parent->_removeChildAt(i); }
  // Destroys the child behind `before`, null for the first one; false when there is none.
  static bool removeAfter(VoMsgEntity* parent, VoMsgEntity* before) { return parent->_removeChildAfter(before); }
  static void freeTree(VoMsgEntity* parent) { parent->_freeTree(); }
  // Hands all children of `from` to `to`, which has none.
  static void moveChildren(VoMsgEntity* from, VoMsgEntity* to);
};

}  // namespace vomsg::detail
