// What the MIME parser asks of the folders above it: TNEF parts and attachments embedded in text. Both are
// defined in tnef/; nothing here depends on them.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgEntity;

namespace vomsg::detail {

// Decodes the content of `part` and reads it as TNEF. On success `part` has a TNEF message as its child; a part
// that is no TNEF stream (its content cannot be decoded, the signature is wrong, the source cannot be read) is
// left without a child. Never fails the message: the code is always kVoSuccess.
VoErrorCode parseTnefChild(VoMsgEntity* part);

// Scans the decoded text of `part` for uuencode and BinHex blocks. On success `part` has a multi-embedded entity
// as its child. kVoNoContent: no block was found, and nothing changed.
VoErrorCode scanEmbeddedBlocks(VoMsgEntity* part);

// Scans [offset, offset + size) of the source of `multipart`, the text behind its close delimiter, in the same way.
// On success a multi-embedded entity is its last child. kVoNoContent: no block was found, and nothing changed.
VoErrorCode scanEpilogue(VoMsgEntity* multipart, std::uint32_t offset, std::uint32_t size);

// A copy of a multi-embedded entity with its subtree, for a copy of its message; yours. Null on failure.
VoMsgEntity* copyEmbeddedTree(VoMsgEntity* from);

}  // namespace vomsg::detail
