#include "vomsg/entity/VoMsgMimeEntity.h"

#include "vomsg/entity/VoMsgMessageSource.h"

VoMsgMimeEntity::VoMsgMimeEntity() = default;
VoMsgMimeEntity::~VoMsgMimeEntity() = default;

std::uint32_t VoMsgMimeEntity::getEntityTypeID() const {
  const VoMsgEntity* const child = getChildEntity();
  const bool isContainer = child && (child->getEntityTypeID() & kVoEntityIsMessage);
  return isContainer ? kVoEntityMime | kVoEntityIsContainer : kVoEntityMime;
}

const char* VoMsgMimeEntity::_getEntityName() { return "VoMsgMimeEntity"; }
