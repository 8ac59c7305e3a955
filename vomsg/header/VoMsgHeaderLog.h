// The line that a failed operation of a header class leaves in the log. These classes know no message, so the tag is
// empty; an entity that passes the code on writes its own line with the message's identifier.
#pragma once

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgLog.h"

namespace vomsg::detail {

// Returns `code`.
inline VoErrorCode logged(VoErrorCode code, const char* source, const char* function, unsigned line) {
  if (voFailed(code)) voMessageLog(1, source, function, line, "", "The operation failed with code 0x%.8X.", code);
  return code;
}

}  // namespace vomsg::detail
