#include "vomsg/charset/convert/VoMsgHZToGBCnConverter.h"

#include "vomsg/charset/convert/VoMsgChineseText.h"

VoErrorCode VoMsgHZToGBCnConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                              std::string& out) const {
  return vomsg::detail::rewriteText<vomsg::detail::HzReader, vomsg::detail::EucWriter>(text, replacement, out);
}
