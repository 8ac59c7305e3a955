#include "vomsg/charset/convert/VoMsgGbMapping.h"

#include "vomsg/charset/convert/VoMsgChineseText.h"
#include "vomsg/charset/convert/VoMsgIcuStage.h"

namespace vomsg::detail {

namespace {

// ICU has a private character for the byte 0xFF, which is none.
void dropPrivateByte(char16_t* units, std::size_t count) { replaceUnits(units, count, u'\uF8F5', kNoCharacter); }

}  // namespace

std::unique_ptr<TextStage> newGbToUtf8(Replacement replacement) {
  return newIcuStage("utf-8", kGbMapping, replacement, dropPrivateByte);
}

std::unique_ptr<TextStage> newUtf8ToGb(Replacement replacement) {
  return std::make_unique<StageChain>(newIcuStage(kGbMapping, "utf-8", replacement, adjustForGb),
                                      std::make_unique<RewriteStage<GbReader, EucWriter>>(replacement));
}

void adjustForGb(char16_t* units, std::size_t count) {
  replaceUnits(units, count, u'\u2015', u'\u2014');  // A1AA
  replaceUnits(units, count, u'\u30FB', u'\u00B7');  // A1A4
}

}  // namespace vomsg::detail
