// What editing needs from inside an entity: an edit can be taken back as if it had never been, content can be exchanged
// for parts, and parts can go in one pass.
#pragma once

#include <memory>
#include <string_view>

#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"

class VoMsgRfc822Message;

namespace vomsg::detail {

// Takes back what is done to one entity while it lives, unless it is told to let it stand: an edit that fails half-way,
// or throws, leaves no trace. Making one throws when memory runs out; taking back cannot fail.
class EditUndo {
 public:
  // `holdsChildren`: the attachments that were found in the text of a leaf are set aside, for new content drops them.
  explicit EditUndo(VoMsgRfc822Entity& entity, bool holdsChildren = false);
  ~EditUndo();
  EditUndo(const EditUndo&) = delete;
  EditUndo& operator=(const EditUndo&) = delete;
  void letStand() { mStands = true; }

 private:
  VoMsgRfc822Entity& mEntity;
  // A deep copy, made while the entity keeps its own block: pointers that a caller holds into that stay good when the
  // edit succeeds.
  VoObjectStub<VoMsgEntityHeader> mHeader;
  VoObjectStub<VoMsgEntityBody> mBody;
  VoMsgEntity* const mpFirstChild;
  const std::unique_ptr<VoMsgMimeEntity> mAside;  // children on their way
  const bool mIsMultipartBody;
  const bool mChildrenChanged;
  bool mStands = false;
};

class ContentEditor {
 public:
  explicit ContentEditor(VoMsgRfc822Entity& entity) : mEntity(entity) {}

  // What ends the lines of the message around the entity.
  std::string_view lineEnd() const;
  // Moves everything that is content, with the Content-* fields, into a new first part of a new multipart/mixed.
  VoErrorCode moveContentToPart() { return mEntity._changeSingleToMulti(); }
  // Becomes a multipart/mixed without parts under `header`, which declares no content. The old content goes. A failure
  // changes nothing.
  VoErrorCode makeMultipart(std::unique_ptr<VoMsgEntityHeader> header);
  // For an entity without content: `message` becomes its child, and what that was read from, `size` bytes, its body.
  void holdMessage(std::unique_ptr<VoMsgRfc822Message> message, std::uint32_t size);
  // Removes every child that `isUnwanted`, in one pass.
  VoErrorCode removeChildren(bool (*isUnwanted)(const VoMsgEntity&));

 private:
  VoMsgRfc822Entity& mEntity;
};

}  // namespace vomsg::detail
