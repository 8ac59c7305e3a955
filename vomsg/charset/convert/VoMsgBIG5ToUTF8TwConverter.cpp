#include "vomsg/charset/convert/VoMsgBIG5ToUTF8TwConverter.h"

#include "vomsg/charset/convert/VoMsgBig5Mapping.h"

VoErrorCode VoMsgBIG5ToUTF8TwConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                  std::string& out) const {
  return vomsg::detail::big5ToUtf8(text, replacement, out);
}
