#include "vomsg/entity/VoMsgMimeEntity.h"

#include "vomsg/entity/VoMsgMailMessage.h"
#include "vomsg/entity/VoMsgMessageSource.h"

VoMsgMimeEntity::VoMsgMimeEntity() = default;
VoMsgMimeEntity::~VoMsgMimeEntity() = default;

std::uint32_t VoMsgMimeEntity::getEntityTypeID() const {
  // Asking the child for its own id would ask its child in turn, down to the innermost of any number of parts.
  const bool isContainer = dynamic_cast<const VoMsgMailMessage*>(getChildEntity()) != nullptr;
  return isContainer ? kVoEntityMime | kVoEntityIsContainer : kVoEntityMime;
}

const char* VoMsgMimeEntity::_getEntityName() { return "VoMsgMimeEntity"; }
