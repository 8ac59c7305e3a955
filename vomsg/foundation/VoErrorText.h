// What a result code says to a human.
#pragma once

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

// One clause in English without a full stop, such as "the transfer encoding is not supported"; it names neither file
// nor part, so that a caller can put them in front. Never null; a code that the library does not use has a clause too.
VOMSG_API const char* voErrorText(VoErrorCode code);
