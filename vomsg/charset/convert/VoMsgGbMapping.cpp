#include "vomsg/charset/convert/VoMsgGbMapping.h"

#include "vomsg/charset/convert/VoMsgChineseText.h"
#include "vomsg/charset/convert/VoMsgIcuHandle.h"

namespace vomsg::detail {

namespace {

// ICU has a private character for the byte 0xFF, which is none.
void dropPrivateByte(char16_t* units, std::size_t count) { replaceUnits(units, count, u'\uF8F5', kNoCharacter); }

}  // namespace

VoErrorCode gbToUtf8(std::string_view text, Replacement replacement, std::string& out) {
  return rewriteWithIcu("utf-8", kGbMapping, text, replacement, out, dropPrivateByte);
}

VoErrorCode utf8ToGb(std::string_view text, Replacement replacement, std::string& out) {
  std::string gbk;
  const VoErrorCode code = rewriteWithIcu(kGbMapping, "utf-8", text, replacement, gbk, adjustForGb);
  return voFailed(code) ? code : keepGb2312(gbk, replacement, out);
}

void adjustForGb(char16_t* units, std::size_t count) {
  replaceUnits(units, count, u'\u2015', u'\u2014');  // A1AA
  replaceUnits(units, count, u'\u30FB', u'\u00B7');  // A1A4
}

VoErrorCode keepGb2312(std::string_view gbk, Replacement replacement, std::string& out) {
  return rewriteText<GbReader, EucWriter>(gbk, replacement, out);
}

}  // namespace vomsg::detail
