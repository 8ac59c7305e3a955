// What the entities of a tree are read from, all of it: a tree may hold parts that came from other messages.
#pragma once

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgEntity;
class VoMsgResourceLocator;

namespace vomsg::detail {

// Whether writing to `target` would destroy what anything in the tree around `entity` is still read from: the same
// resource, or the same file, be it under another path. Asked before `target` is opened, which truncates it.
bool readsFrom(VoMsgEntity& entity, const VoMsgResourceLocator& target);
// The first step of every getter that may be given a target (else null): true, and `err` is kVoBadArgument, for one
// that the tree is read from.
bool isTargetRefused(VoMsgEntity& entity, const VoMsgResourceLocator* target, int& err);

// Whether what `root`, a message, will be written from is still what was read.
bool sourcesAreUnchanged(VoMsgEntity& root);

}  // namespace vomsg::detail
