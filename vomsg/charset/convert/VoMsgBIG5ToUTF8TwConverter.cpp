#include "vomsg/charset/convert/VoMsgBIG5ToUTF8TwConverter.h"

#include "vomsg/charset/convert/VoMsgIcuHandle.h"

VoErrorCode VoMsgBIG5ToUTF8TwConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                  std::string& out) const {
  return vomsg::detail::rewriteWithIcu(kTo, kFrom, text, replacement, out);
}
