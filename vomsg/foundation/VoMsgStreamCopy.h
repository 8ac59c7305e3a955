// What VoMsgBufferedWriter::copyFrom() does, for the library's own steps: their callers log what fails.
#pragma once

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;

namespace vomsg::detail {

// Copies the rest of `source` and flushes. kVoWriteFailed: a write or the flush failed.
VoErrorCode copyRest(VoMsgBufferedReader& source, VoMsgBufferedWriter& target);

}  // namespace vomsg::detail
