#include "vomsg/embedded/VoMsgMultiEmbededEntity.h"

#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"

using vomsg::detail::guarded;

namespace {

constexpr char kLogSource[] = "VoMsgMultiEmbededEntity";

const VoMsgResourceLocator* noContent(int& err) {
  err = static_cast<int>(kVoNoContent);
  return nullptr;
}

}  // namespace

VoMsgMultiEmbededEntity::VoMsgMultiEmbededEntity() = default;
VoMsgMultiEmbededEntity::VoMsgMultiEmbededEntity(Epilogue epilogue) : mEpilogue(epilogue) {}
VoMsgMultiEmbededEntity::~VoMsgMultiEmbededEntity() = default;

std::uint32_t VoMsgMultiEmbededEntity::getEntityTypeID() const { return kVoEntityMultiEmbeded; }
const char* VoMsgMultiEmbededEntity::_getEntityName() { return "VoMsgMultiEmbededEntity"; }
bool VoMsgMultiEmbededEntity::isMultipartEntity() const { return true; }
bool VoMsgMultiEmbededEntity::_isModified() { return mPieceRemoved; }

VoErrorCode VoMsgMultiEmbededEntity::removeChildEntityAt(unsigned i) {
  if (!_removeChildAt(i)) return VO_LOGGED(_getUUIDString(), kVoOutOfRange);
  mPieceRemoved = true;
  return kVoSuccess;
}

const char* VoMsgMultiEmbededEntity::getContentType() const { return "text/plain"; }
const char* VoMsgMultiEmbededEntity::getCharset() const {
  if (isEpilogue()) return "us-ascii-59428";
  return mpParent ? mpParent->getCharset() : nullptr;
}
const char* VoMsgMultiEmbededEntity::getEncoding() const { return nullptr; }
const char* VoMsgMultiEmbededEntity::getFileName(const char*) const { return nullptr; }
unsigned VoMsgMultiEmbededEntity::getContentSize() const { return 0; }

const VoMsgResourceLocator* VoMsgMultiEmbededEntity::getContent(int& err, const VoMsgResourceLocator*) {
  VO_LOGGED(_getUUIDString(), kVoNoContent);
  return noContent(err);
}
const VoMsgResourceLocator* VoMsgMultiEmbededEntity::getTextContent(int& err, const VoMsgResourceLocator*,
                                                                    const char*) {
  VO_LOGGED(_getUUIDString(), kVoNoContent);
  return noContent(err);
}
const VoMsgResourceLocator* VoMsgMultiEmbededEntity::getRawContent(int& err, const VoMsgResourceLocator*) {
  VO_LOGGED(_getUUIDString(), kVoNoContent);
  return noContent(err);
}
const VoMsgResourceLocator* VoMsgMultiEmbededEntity::_getContent(int& err, const VoMsgResourceLocator*) {
  return noContent(err);
}
const VoMsgResourceLocator* VoMsgMultiEmbededEntity::_getRawContent(int& err, const VoMsgResourceLocator*) {
  return noContent(err);
}
const VoMsgResourceLocator* VoMsgMultiEmbededEntity::_getTextContent(int& err, const VoMsgResourceLocator*,
                                                                     const char*) {
  return noContent(err);
}

VoErrorCode VoMsgMultiEmbededEntity::setContent(VoMsgResourceLocator*, const char*, const char*) {
  return VO_LOGGED(_getUUIDString(), kVoNoContent);
}
VoErrorCode VoMsgMultiEmbededEntity::setTextContent(VoMsgResourceLocator*, const char*, const char*) {
  return VO_LOGGED(_getUUIDString(), kVoNoContent);
}
VoErrorCode VoMsgMultiEmbededEntity::setRawContent(VoMsgResourceLocator*, const char*, const char*) {
  return VO_LOGGED(_getUUIDString(), kVoNoContent);
}
VoErrorCode VoMsgMultiEmbededEntity::replaceContent(VoMsgResourceLocator*, const char*) {
  return VO_LOGGED(_getUUIDString(), kVoNoContent);
}
VoErrorCode VoMsgMultiEmbededEntity::replaceTextContent(VoMsgResourceLocator*, const char*, VoMsgReplaceOption) {
  return VO_LOGGED(_getUUIDString(), kVoNoContent);
}
VoErrorCode VoMsgMultiEmbededEntity::setFileName(const char*) { return VO_LOGGED(_getUUIDString(), kVoNotSupported); }
VoErrorCode VoMsgMultiEmbededEntity::setAttachment(VoMsgResourceLocator*) {
  return VO_LOGGED(_getUUIDString(), kVoNoContent);
}

void VoMsgMultiEmbededEntity::dumpEntityInf(std::FILE* out) { _dumpEntityInf(out); }

VoErrorCode VoMsgMultiEmbededEntity::copy(VoMsgEntity* from) {
  const auto* const other = dynamic_cast<VoMsgMultiEmbededEntity*>(from);
  if (!other) return VO_LOGGED(_getUUIDString(), kVoBadArgument);
  mText = other->mText;
  mEpilogue = other->mEpilogue;
  mPieceRemoved = other->mPieceRemoved;
  return kVoSuccess;
}

VoMsgBufferedReader* VoMsgMultiEmbededEntity::getContextSource(int& err) {
  VoMsgBufferedReader* const reader = textSource() ? textSource()->openReader() : nullptr;
  err = static_cast<int>(reader ? kVoSuccess : kVoReadFailed);
  return reader;
}

VoErrorCode VoMsgMultiEmbededEntity::_writeToResource(VoMsgBufferedWriter* writer) {
  if (!writer) return kVoBadArgument;
  return guarded([&]() -> VoErrorCode {
    const vomsg::detail::OpenSource open(textSource());
    for (VoMsgEntity* piece = getChildEntity(); piece; piece = piece->getNextSiblingEntity()) {
      const VoErrorCode code = _writeEntityToResource(piece, writer);
      if (voFailed(code)) return code;
    }
    return kVoSuccess;
  });
}
