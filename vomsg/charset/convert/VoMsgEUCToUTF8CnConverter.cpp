#include "vomsg/charset/convert/VoMsgEUCToUTF8CnConverter.h"

#include "vomsg/charset/convert/VoMsgGbMapping.h"

VoErrorCode VoMsgEUCToUTF8CnConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                 std::string& out) const {
  return vomsg::detail::gbToUtf8(text, replacement, out);
}
