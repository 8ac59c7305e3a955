// What editing needs from inside an entity: its header block and body can be kept and put back, so that an edit that
// fails half-way leaves no trace, and its content can be exchanged for parts.
#pragma once

#include <memory>

#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"

class VoMsgRfc822Message;

namespace vomsg::detail {

class ContentEditor {
 public:
  explicit ContentEditor(VoMsgRfc822Entity& entity) : mEntity(entity) {}

  // Header block and body as they are now. The block is a deep copy, made while the entity keeps its own: pointers
  // that a caller holds into it stay good when the edit succeeds. Throws when memory runs out.
  struct Kept {
    std::unique_ptr<VoMsgEntityHeader> header;
    VoObjectStub<VoMsgEntityBody> body;
    bool childrenChanged = false;
  };
  Kept keep() const;
  void restore(Kept&& kept);

  // Moves everything that is content, with the Content-* fields, into a new first part of a new multipart/mixed.
  VoErrorCode moveContentToPart() { return mEntity._changeSingleToMulti(); }
  // Becomes a multipart/mixed without parts under `header`, which declares no content. The old content goes. A failure
  // changes nothing.
  VoErrorCode makeMultipart(std::unique_ptr<VoMsgEntityHeader> header);
  // For an entity without content: `message` becomes its child, and what that was read from, `size` bytes, its body.
  void holdMessage(std::unique_ptr<VoMsgRfc822Message> message, std::uint32_t size);

 private:
  VoMsgRfc822Entity& mEntity;
};

}  // namespace vomsg::detail
