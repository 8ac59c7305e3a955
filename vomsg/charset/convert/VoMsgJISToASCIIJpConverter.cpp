#include "vomsg/charset/convert/VoMsgJISToASCIIJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"

VoErrorCode VoMsgJISToASCIIJpConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                  std::string& out) const {
  return vomsg::detail::rewriteText<vomsg::detail::JisReader, vomsg::detail::AsciiWriter>(text, replacement, out);
}
