// What the MIME parser asks of the folders above it: TNEF parts and attachments embedded in text. Both are
// defined in tnef/; nothing here depends on them.
#pragma once

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgEntity;
class VoMsgResourceLocator;

namespace vomsg::detail {

// Decodes the content of `part` and reads it as TNEF. On success `part` has a TNEF message as its child; a part
// that is no TNEF stream (its content cannot be decoded, the signature is wrong, the source cannot be read) is
// left without a child. Never fails the message: the code is always kVoSuccess.
VoErrorCode parseTnefChild(VoMsgEntity* part);

// Scans the decoded text of `part` for uuencode and BinHex blocks. On success `part` has a multi-embedded entity
// as its child. kVoNoContent: no block was found, and nothing changed.
VoErrorCode scanEmbeddedBlocks(VoMsgEntity* part);

}  // namespace vomsg::detail
