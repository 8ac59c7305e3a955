// Big5 and Unicode, by ICU's Big5.
#pragma once

#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoMsgReplacement.h"
#include "vomsg/foundation/VoErrorCode.h"

namespace vomsg::detail {

// These append to `out`; kVoConversionFailed: a character is invalid or unknown and no replacement allowed.
VoErrorCode big5ToUtf8(std::string_view text, Replacement replacement, std::string& out);
VoErrorCode utf8ToBig5(std::string_view text, Replacement replacement, std::string& out);

}  // namespace vomsg::detail
