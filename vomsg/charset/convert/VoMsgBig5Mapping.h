// Big5 and Unicode, by ICU's Big5.
#pragma once

#include <memory>

#include "vomsg/charset/convert/VoMsgReplacement.h"
#include "vomsg/charset/convert/VoMsgTextStage.h"

namespace vomsg::detail {

// A code of theirs: a character is invalid or unknown and no replacement allowed.
std::unique_ptr<TextStage> newBig5ToUtf8(Replacement replacement);
std::unique_ptr<TextStage> newUtf8ToBig5(Replacement replacement);

}  // namespace vomsg::detail
