#include "vomsg/charset/convert/VoMsgUTF8ToJISJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJapaneseWriters.h"
#include "vomsg/charset/convert/VoMsgJisMapping.h"

VoErrorCode VoMsgUTF8ToJISJpConverter::transform(std::string_view text, vomsg::detail::Replacement replacement,
                                                 std::string& out) const {
  std::string euc;
  const VoErrorCode code = vomsg::detail::utf8ToEuc(text, replacement, euc);
  if (voFailed(code)) return code;
  return vomsg::detail::rewriteText<vomsg::detail::EucReader, vomsg::detail::JisWriter>(euc, replacement, out);
}
