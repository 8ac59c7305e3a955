#include "vomsg/entity/VoMsgTreeSources.h"

#include <unordered_set>

#include "vomsg/entity/VoMsgEntityInside.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/foundation/VoMsgFileResource.h"

namespace vomsg::detail {

namespace {

MessageSource* sourceOf(VoMsgEntity& entity) {
  if (const auto* const part = dynamic_cast<const VoMsgRfc822Entity*>(&entity))
    return Inside::source(*part).getObject();
  MessageSource* const source = tnefSource(entity);
  return source ? source : embeddedSource(entity);
}

// Calls `visit(source)` for the source of each entity from `root` down, until that returns false.
template <class Visit>
bool visitSources(VoMsgEntity& root, Visit&& visit) {
  for (VoMsgEntity* entity = &root; entity;) {
    MessageSource* const source = sourceOf(*entity);
    if (source && !visit(*source)) return false;
    VoMsgEntity* next = entity->getChildEntity();
    for (; !next && entity != &root; entity = entity->getParentEntity()) next = entity->getNextSiblingEntity();
    entity = next;
  }
  return true;
}

}  // namespace

bool readsFrom(VoMsgEntity& entity, const VoMsgResourceLocator& target) {
  MessageSource* own = nullptr;
  for (VoMsgEntity* up = &entity; up && !own; up = up->getParentEntity()) own = sourceOf(*up);
  if (own && own->whole() && own->whole()->equal(const_cast<VoMsgResourceLocator*>(&target))) return true;
  const auto* const file = dynamic_cast<const VoMsgFileResource*>(&target);
  if (!file) return false;
  const ResourceState state = ResourceState::ofFile(file->getFilePath(VoMsgResourceLocator::dataPart));
  if (!state.isKnown() || !mayBeSource(state)) return false;
  VoMsgEntity* root = &entity;
  while (root->getParentEntity()) root = root->getParentEntity();
  return !visitSources(*root, [&](MessageSource& source) { return !source.wholeState().isSameFile(state); });
}

bool isTargetRefused(VoMsgEntity& entity, const VoMsgResourceLocator* target, int& err) {
  if (!target || !readsFrom(entity, *target)) return false;
  err = static_cast<int>(kVoBadArgument);
  return true;
}

bool sourcesAreUnchanged(VoMsgEntity& root) {
  MessageSource* const own = sourceOf(root);
  if (own && !own->isUnchanged()) return false;
  if (!root.isModified()) return true;
  std::unordered_set<const VoMsgResourceLocator*> seen;
  return visitSources(
      root, [&](MessageSource& source) { return !seen.insert(source.whole()).second || source.isUnchanged(); });
}

}  // namespace vomsg::detail
