#include "vomsg/foundation/VoMsgString.h"

using vomsg::detail::copyCStringOrNull;

VoMsgString::VoMsgString(const char* text, const char* charset)
    : mText(copyCStringOrNull(text)), mCharset(copyCStringOrNull(charset)) {}
