// Japanese text and Unicode, by ICU's EUC-JP, which unlike its Shift_JIS leaves control characters in their places.
#pragma once

#include <memory>

#include "vomsg/charset/convert/VoMsgReplacement.h"
#include "vomsg/charset/convert/VoMsgTextStage.h"

namespace vomsg::detail {

// A code of theirs: a character is invalid or unknown and no replacement allowed.
std::unique_ptr<TextStage> newEucToUtf8(Replacement replacement);
std::unique_ptr<TextStage> newUtf8ToEuc(Replacement replacement);

}  // namespace vomsg::detail
