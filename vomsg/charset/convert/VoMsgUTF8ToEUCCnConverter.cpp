#include "vomsg/charset/convert/VoMsgUTF8ToEUCCnConverter.h"

#include "vomsg/charset/convert/VoMsgGbMapping.h"

VoErrorCode VoMsgUTF8ToEUCCnConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                 std::string& out) const {
  return vomsg::detail::utf8ToGb(text, replacement, out);
}
