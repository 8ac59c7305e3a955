// GB2312 and Unicode, by ICU's GBK. Mail that says GB2312 usually holds GBK, which is therefore read; written are only
// the rows of GB2312, for readers that know no more.
#pragma once

#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoMsgReplacement.h"
#include "vomsg/foundation/VoErrorCode.h"

namespace vomsg::detail {

// ICU's name for the mapping. Its own "gb2312" lacks U+2014 and U+00B7, the dash and the dot of Chinese text.
inline constexpr char kGbMapping[] = "gbk";

// These append to `out`; kVoConversionFailed: a character is invalid or unknown and no replacement allowed.
VoErrorCode gbToUtf8(std::string_view text, Replacement replacement, std::string& out);
VoErrorCode utf8ToGb(std::string_view text, Replacement replacement, std::string& out);

// Replaces in UTF-16 what older tables have for the codes of the dash and the dot.
void adjustForGb(char16_t* units, std::size_t count);
// Appends `gbk` reduced to the rows of GB2312.
VoErrorCode keepGb2312(std::string_view gbk, Replacement replacement, std::string& out);

}  // namespace vomsg::detail
