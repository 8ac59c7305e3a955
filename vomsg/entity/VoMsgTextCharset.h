// Which charset the text of a part is in: declared, recognised from the bytes, or assumed.
#pragma once

#include <string>

#include "vomsg/entity/VoMsgRfc822Entity.h"

namespace vomsg::detail {

struct TextCharset {
  std::string name;
  VoMsgRfc822Entity::CharsetOrigin origin;
};

// `content` is the decoded content of `entity`; it may be null when only the declaration matters.
TextCharset textCharsetOf(const VoMsgRfc822Entity& entity, const VoMsgResourceLocator* content);

}  // namespace vomsg::detail
