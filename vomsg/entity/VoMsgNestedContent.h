// What the MIME parser asks of the folders above it: TNEF parts, defined in tnef/, and attachments embedded in text,
// defined in embedded/. Nothing here depends on them.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgEntity;
class VoMsgRfc822Entity;

namespace vomsg::detail {

class MessageSource;
enum class TransferEncoding : std::uint8_t;

// Where a message lies that is about to be read: the tag of its log lines, its nesting level and the bits of
// VoMsgExtraOption that held when reading began. Handed down from parse to parse, because climbing to the root for them
// costs as much as the tree is deep.
struct MessagePlace {
  const char* tag;
  unsigned level;
  int options;
};

// Decodes the content of `part` and reads it as TNEF. On success `part` has a TNEF message as its child; a part
// that is no TNEF stream (its content cannot be decoded, the signature is wrong, the source cannot be read) is
// left without a child. Never fails the message: the code is always kVoSuccess.
VoErrorCode parseTnefChild(VoMsgEntity* part, const MessagePlace& place);

// Scans the text of `part`, decoded from `encoding`, for uuencode and BinHex blocks; `source` is what `part` is read
// from, and messages among the blocks are read at `place`. On success `part` has a multi-embedded entity as its child.
// kVoNoContent: no block was found, or the text cannot be decoded, and nothing changed.
VoErrorCode scanEmbeddedBlocks(VoMsgRfc822Entity* part, MessageSource* source, TransferEncoding encoding,
                               const MessagePlace& place);

// Scans [offset, offset + size) of `source`, the text behind the close delimiter of `multipart`, in the same way. On
// success a multi-embedded entity is its last child. kVoNoContent: no block was found, and nothing changed.
VoErrorCode scanEpilogue(VoMsgRfc822Entity* multipart, MessageSource* source, std::uint32_t offset, std::uint32_t size,
                         const MessagePlace& place);

// Whether `entity` is what scanEpilogue() made, and of which range.
bool isEpilogueEntity(const VoMsgEntity* entity, std::uint32_t& offset, std::uint32_t& size);

// What a TNEF message, or a text with blocks, is read from; null for entities of other kinds.
MessageSource* tnefSource(const VoMsgEntity& entity);
MessageSource* embeddedSource(const VoMsgEntity& entity);

// A copy of a TNEF message or a multi-embedded entity with its subtree, for a copy of the message around it; yours.
// Null on failure.
VoMsgEntity* copyTnefTree(VoMsgEntity* from);
VoMsgEntity* copyEmbeddedTree(VoMsgEntity* from);

}  // namespace vomsg::detail
