#include "vomsg/entity/VoMsgTextCharset.h"

namespace vomsg::detail {

TextCharset textCharsetOf(const VoMsgRfc822Entity& entity, const VoMsgResourceLocator*) {
  const char* const declared = entity.getCharset();
  if (declared && *declared) return {declared, VoMsgRfc822Entity::CharsetOrigin::declared};
  return {"us-ascii", VoMsgRfc822Entity::CharsetOrigin::assumed};
}

}  // namespace vomsg::detail
