#include "vomsg/tnef/VoMsgMapiChildren.h"

#include "vomsg/tnef/VoMsgMapiList.h"

namespace vomsg::detail {

VoErrorCode MapiChildren::make(std::uint16_t type, std::uint16_t id, const MapiValueHead& head, bool readsStreams) {
  VoMsgTnefEntity* const child = VoMsgTnefEntity::_createValueChild(mpMessage, type, id, head, readsStreams);
  if (!child) return kVoSuccess;
  mpLast = child;
  return head.holdsStream ? child->_readNestedMessage(*mpSource, head) : kVoSuccess;
}

}  // namespace vomsg::detail
