// What editing needs from inside an entity: content can be exchanged for parts, and parts can go in one pass.
#pragma once

#include <memory>
#include <string_view>

#include "vomsg/entity/VoMsgRfc822Entity.h"

class VoMsgRfc822Message;

namespace vomsg::detail {

class EditUndos;

class ContentEditor {
 public:
  explicit ContentEditor(VoMsgRfc822Entity& entity) : mEntity(entity) {}

  // What ends the lines of a text in the message around the entity: LF or CR LF.
  std::string_view lineEnd() const;
  // Moves everything that is content, with the Content-* fields, into a new first part of a new multipart/mixed.
  VoErrorCode moveContentToPart();
  // Becomes a multipart/mixed without parts under `header`, which declares no content. The old content goes. A failure
  // changes nothing.
  VoErrorCode makeMultipart(std::unique_ptr<VoMsgEntityHeader> header, EditUndos& undos);
  // For an entity without content: `message` becomes its child, and what that was read from, `size` bytes, its body.
  void holdMessage(std::unique_ptr<VoMsgRfc822Message> message, std::uint32_t size);
  // Removes every child that `isUnwanted`, in two steps: what can fail, and what cannot.
  void noteRemovals(bool (*isUnwanted)(const VoMsgEntity&));
  void removeChildren(bool (*isUnwanted)(const VoMsgEntity&));

 private:
  VoMsgRfc822Entity& mEntity;
};

}  // namespace vomsg::detail
