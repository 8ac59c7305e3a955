// A part of a multipart body.
#pragma once

#include "vomsg/entity/VoMsgRfc822Entity.h"

class VOMSG_API VoMsgMimeEntity : public VoMsgRfc822Entity {
 public:
  VoMsgMimeEntity();
  ~VoMsgMimeEntity() override;
  std::uint32_t getEntityTypeID() const override;
  const char* _getEntityName() override;
};
