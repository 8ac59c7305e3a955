#include "vomsg/charset/convert/VoMsgUTF8ToBIG5TwConverter.h"

#include "vomsg/charset/convert/VoMsgBig5Mapping.h"

VoErrorCode VoMsgUTF8ToBIG5TwConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                  std::string& out) const {
  return vomsg::detail::utf8ToBig5(text, replacement, out);
}
