#include "vomsg/charset/convert/VoMsgHZToUTF8CnConverter.h"

#include "vomsg/charset/convert/VoMsgChineseText.h"
#include "vomsg/charset/convert/VoMsgGbMapping.h"

VoErrorCode VoMsgHZToUTF8CnConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                std::string& out) const {
  std::string gb;
  const VoErrorCode code =
      vomsg::detail::rewriteText<vomsg::detail::HzReader, vomsg::detail::EucWriter>(text, replacement, gb);
  return voFailed(code) ? code : vomsg::detail::gbToUtf8(gb, replacement, out);
}
