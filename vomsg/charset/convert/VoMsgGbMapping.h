// GB2312 and Unicode, by ICU's GBK. Mail that says GB2312 usually holds GBK, which is therefore read; written are only
// the rows of GB2312, for readers that know no more.
#pragma once

#include <cstddef>
#include <memory>

#include "vomsg/charset/convert/VoMsgReplacement.h"
#include "vomsg/charset/convert/VoMsgTextStage.h"

namespace vomsg::detail {

// ICU's name for the mapping. Its own "gb2312" lacks U+2014 and U+00B7, the dash and the dot of Chinese text.
inline constexpr char kGbMapping[] = "gbk";

// A code of theirs: a character is invalid or unknown and no replacement allowed.
std::unique_ptr<TextStage> newGbToUtf8(Replacement replacement);
std::unique_ptr<TextStage> newUtf8ToGb(Replacement replacement);

// Replaces in UTF-16 what older tables have for the codes of the dash and the dot.
void adjustForGb(char16_t* units, std::size_t count);

}  // namespace vomsg::detail
