#include "vomsg/charset/convert/VoMsgJISToUTF8JpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJisMapping.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"

VoErrorCode VoMsgJISToUTF8JpConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                 std::string& out) const {
  std::string euc;
  const VoErrorCode code =
      vomsg::detail::rewriteText<vomsg::detail::JisReader, vomsg::detail::EucWriter>(text, replacement, euc);
  return voFailed(code) ? code : vomsg::detail::eucToUtf8(euc, replacement, out);
}
