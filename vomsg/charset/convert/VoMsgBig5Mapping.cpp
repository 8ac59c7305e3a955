#include "vomsg/charset/convert/VoMsgBig5Mapping.h"

#include "vomsg/charset/convert/VoMsgIcuStage.h"

namespace vomsg::detail {
namespace {

// ICU has characters for the bytes 0x80 and 0xFF, which are none.
void dropSingleBytes(char16_t* units, std::size_t count) {
  replaceUnits(units, count, u'\x80', kNoCharacter);
  replaceUnits(units, count, u'\uF8F8', kNoCharacter);
}

}  // namespace

std::unique_ptr<TextStage> newBig5ToUtf8(Replacement replacement) {
  return newIcuStage("utf-8", "big5", replacement, dropSingleBytes);
}

std::unique_ptr<TextStage> newUtf8ToBig5(Replacement replacement) {
  return newIcuStage("big5", "utf-8", replacement, dropSingleBytes);
}

}  // namespace vomsg::detail
