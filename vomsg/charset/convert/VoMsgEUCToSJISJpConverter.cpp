#include "vomsg/charset/convert/VoMsgEUCToSJISJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJapaneseWriters.h"

VoErrorCode VoMsgEUCToSJISJpConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                 std::string& out) const {
  return vomsg::detail::rewriteText<vomsg::detail::EucReader, vomsg::detail::SjisWriter>(text, replacement, out);
}
