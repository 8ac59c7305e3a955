#include "vomsg/charset/convert/VoMsgJISToSJISJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJapaneseWriters.h"

VoErrorCode VoMsgJISToSJISJpConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                 std::string& out) const {
  return vomsg::detail::rewriteText<vomsg::detail::JisReader, vomsg::detail::SjisWriter>(text, replacement, out);
}
