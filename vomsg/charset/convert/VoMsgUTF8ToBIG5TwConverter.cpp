#include "vomsg/charset/convert/VoMsgUTF8ToBIG5TwConverter.h"

#include "vomsg/charset/convert/VoMsgIcuHandle.h"

VoErrorCode VoMsgUTF8ToBIG5TwConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                  std::string& out) const {
  return vomsg::detail::rewriteWithIcu(kTo, kFrom, text, replacement, out);
}
