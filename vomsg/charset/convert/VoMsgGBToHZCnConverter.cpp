#include "vomsg/charset/convert/VoMsgGBToHZCnConverter.h"

#include "vomsg/charset/convert/VoMsgChineseText.h"

VoErrorCode VoMsgGBToHZCnConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                              std::string& out) const {
  return vomsg::detail::rewriteText<vomsg::detail::GbReader, vomsg::detail::HzWriter>(text, replacement, out);
}
