#include "vomsg/charset/convert/VoMsgBig5Mapping.h"

#include "vomsg/charset/convert/VoMsgIcuHandle.h"

namespace vomsg::detail {
namespace {

// ICU has characters for the bytes 0x80 and 0xFF, which are none.
void dropSingleBytes(char16_t* units, std::size_t count) {
  replaceUnits(units, count, u'\x80', kNoCharacter);
  replaceUnits(units, count, u'\uF8F8', kNoCharacter);
}

}  // namespace

VoErrorCode big5ToUtf8(std::string_view text, Replacement replacement, std::string& out) {
  return rewriteWithIcu("utf-8", "big5", text, replacement, out, dropSingleBytes);
}

VoErrorCode utf8ToBig5(std::string_view text, Replacement replacement, std::string& out) {
  return rewriteWithIcu("big5", "utf-8", text, replacement, out, dropSingleBytes);
}

}  // namespace vomsg::detail
