#include "vomsg/charset/convert/VoMsgSJISToEUCJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"

VoErrorCode VoMsgSJISToEUCJpConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                 std::string& out) const {
  return vomsg::detail::rewriteText<vomsg::detail::SjisReader, vomsg::detail::EucWriter>(text, replacement, out);
}
