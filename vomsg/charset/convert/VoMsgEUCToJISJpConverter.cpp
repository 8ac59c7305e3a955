#include "vomsg/charset/convert/VoMsgEUCToJISJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJapaneseWriters.h"

VoErrorCode VoMsgEUCToJISJpConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                std::string& out) const {
  return vomsg::detail::rewriteText<vomsg::detail::EucReader, vomsg::detail::JisWriter>(text, replacement, out);
}
