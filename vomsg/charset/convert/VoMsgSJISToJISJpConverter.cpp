#include "vomsg/charset/convert/VoMsgSJISToJISJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJapaneseWriters.h"

VoErrorCode VoMsgSJISToJISJpConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                 std::string& out) const {
  return vomsg::detail::rewriteText<vomsg::detail::SjisReader, vomsg::detail::JisWriter>(text, replacement, out);
}
