#include "vomsg/entity/VoMsgHeaderlessEntity.h"

#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

using Entity = VoMsgHeaderlessEntity;

namespace {
constexpr char kLogSource[] = "VoMsgHeaderlessEntity";
}

VoErrorCode Entity::appendChildEntity(VoMsgEntity*) { return VO_LOGGED(_getUUIDString(), kVoNotSupported); }
VoErrorCode Entity::insertChildEntityAt(VoMsgEntity*, unsigned) { return VO_LOGGED(_getUUIDString(), kVoNotSupported); }
VoErrorCode Entity::removeChildEntityAt(unsigned) { return VO_LOGGED(_getUUIDString(), kVoNotSupported); }
VoErrorCode Entity::appendEntity(VoMsgEntity*) { return VO_LOGGED(_getUUIDString(), kVoNotSupported); }

const char* Entity::getHeaderValue(const char*, const char*) const { return nullptr; }
const char* Entity::getRawHeaderValue(const char*) const { return nullptr; }
const char* Entity::getHeaderParameterValue(const char*, const char*, const char*) const { return nullptr; }
const char* Entity::getRawHeaderParameterValue(const char*, const char*) const { return nullptr; }
VoErrorCode Entity::setHeaderValue(const char*, const char*, const char*, const char*) {
  return VO_LOGGED(_getUUIDString(), kVoNotSupported);
}
VoErrorCode Entity::setHeaderParameterValue(const char*, const char*, const char*, const char*, const char*) {
  return VO_LOGGED(_getUUIDString(), kVoNotSupported);
}
unsigned Entity::countHeaders() const { return 0; }
VoMsgHeaderField* Entity::getHeaderAt(unsigned) const { return nullptr; }
VoMsgHeaderField* Entity::getHeader(const char*) const { return nullptr; }
VoErrorCode Entity::appendHeader(VoMsgHeaderField*) { return VO_LOGGED(_getUUIDString(), kVoNotSupported); }
VoErrorCode Entity::insertHeaderAt(VoMsgHeaderField*, unsigned) { return VO_LOGGED(_getUUIDString(), kVoNotSupported); }
VoErrorCode Entity::removeHeaderAt(unsigned) { return VO_LOGGED(_getUUIDString(), kVoNotSupported); }
VoErrorCode Entity::removeHeader(const char*) { return VO_LOGGED(_getUUIDString(), kVoNotSupported); }
VoErrorCode Entity::removeHeaderParameter(const char*, const char*) {
  return VO_LOGGED(_getUUIDString(), kVoNotSupported);
}

VoErrorCode Entity::setContentType(const char*) { return VO_LOGGED(_getUUIDString(), kVoNotSupported); }
unsigned Entity::getResourceSize(VoMsgResourceLocator* resource) {
  return resource ? resource->getSize(VoMsgResourceLocator::dataPart) : 0;
}

VoErrorCode Entity::_readHeaderPart(const char*) { return kVoNotSupported; }
VoErrorCode Entity::_readBodyPart(VoMsgBoundaryType&) { return kVoNotSupported; }
VoErrorCode Entity::_writeBoundarySeparator(VoMsgBufferedWriter*, bool) { return kVoNotSupported; }
