// What the parts of a message share: the message itself and the walks that are under way over it, so that a walk goes
// on when the part it stands on is removed.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "vomsg/entity/VoMsgEntity.h"
#include "vomsg/entity/VoMsgMailMessage.h"

namespace vomsg::inner {

// The next entity in document order that does not lie below `entity`; null when there is none below `root`.
inline VoMsgEntity* behind(VoMsgEntity* entity, VoMsgEntity* root) {
  for (; entity != root && entity != nullptr; entity = entity->getParentEntity()) {
    if (VoMsgEntity* const sibling = entity->getNextSiblingEntity()) return sibling;
  }
  return nullptr;
}

inline VoMsgEntity* stepFrom(VoMsgEntity* entity, VoMsgEntity* root, bool descend = true) {
  VoMsgEntity* const child = descend ? entity->getChildEntity() : nullptr;
  return child != nullptr ? child : behind(entity, root);
}

inline bool liesIn(const VoMsgEntity* entity, const VoMsgEntity* subtree) {
  while (entity != nullptr && entity != subtree) entity = entity->getParentEntity();
  return entity != nullptr;
}

inline bool isMessage(const VoMsgEntity& entity) { return (entity.getEntityTypeID() & kVoEntityIsMessage) != 0; }

// A walk in document order. It belongs to a range and is known to the tree as long as that lives.
struct Cursor {
  VoMsgEntity* root = nullptr;
  VoMsgEntity* current = nullptr;
  VoMsgEntity* ahead = nullptr;  // where to go instead of on from `current`
  bool isMoved = false;          // `current` was removed or lost its children: `ahead` counts
};

struct Tree {
  explicit Tree(std::unique_ptr<VoMsgMailMessage> owned) : message(std::move(owned)) {}

  // Runs `change`, which destroys `gone` (with `below` only what lies below it) when it succeeds. Walks that stand
  // there continue behind it.
  template <class Change>
  VoErrorCode destroying(VoMsgEntity* gone, bool below, Change&& change) {
    struct Move {
      Cursor* cursor;
      VoMsgEntity* to;
      bool isEnd;
    };
    std::vector<Move> moves;
    for (Cursor* const cursor : cursors) {
      VoMsgEntity* const place = cursor->isMoved ? cursor->ahead : cursor->current;
      const bool rootGoes = liesIn(cursor->root, gone) && !(below && cursor->root == gone);
      if (rootGoes) {
        moves.push_back({cursor, nullptr, true});
      } else if (place != nullptr && liesIn(place, gone) && !(below && place == gone)) {
        moves.push_back({cursor, behind(gone, cursor->root), false});
      }
    }
    const VoErrorCode code = change();
    if (voFailed(code)) return code;
    for (const Move& move : moves) {
      move.cursor->ahead = move.to;
      move.cursor->isMoved = true;
      if (move.isEnd) move.cursor->root = nullptr;
    }
    return code;
  }

  std::unique_ptr<VoMsgMailMessage> message;
  std::vector<Cursor*> cursors;
};

}  // namespace vomsg::inner
