#include "vomsg/charset/convert/VoMsgJISToEUCJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"

VoErrorCode VoMsgJISToEUCJpConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                std::string& out) const {
  return vomsg::detail::rewriteText<vomsg::detail::JisReader, vomsg::detail::EucWriter>(text, replacement, out);
}
