// A part of a multipart body (RFC 2046, section 5.1). Parts of a message are made by its parser; a part that a caller
// makes starts without fields and content, gets both through its setters, and goes into a message with
// appendChildEntity, which takes it over.
#pragma once

#include "vomsg/entity/VoMsgRfc822Entity.h"

class VOMSG_API VoMsgMimeEntity : public VoMsgRfc822Entity {
 public:
  VoMsgMimeEntity();
  ~VoMsgMimeEntity() override;
  // kVoEntityMime; with the container flag while its first child is a message.
  std::uint32_t getEntityTypeID() const override;
  const char* _getEntityName() override;
};
