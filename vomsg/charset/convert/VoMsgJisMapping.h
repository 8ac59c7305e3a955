// Japanese text and Unicode, by ICU's EUC-JP, which unlike its Shift_JIS leaves control characters in their places.
#pragma once

#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoMsgReplacement.h"
#include "vomsg/foundation/VoErrorCode.h"

namespace vomsg::detail {

// These append to `out`; kVoConversionFailed: a character is invalid or unknown and no replacement allowed.
VoErrorCode eucToUtf8(std::string_view text, Replacement replacement, std::string& out);
VoErrorCode utf8ToEuc(std::string_view text, Replacement replacement, std::string& out);

}  // namespace vomsg::detail
