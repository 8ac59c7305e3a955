// What a caller can change about a TNEF entity: the content, name and type of an attachment, and its being there.
#include <memory>
#include <string>
#include <utility>

#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgMultiString.h"
#include "vomsg/foundation/VoMsgTreeEpoch.h"
#include "vomsg/tnef/VoMsgMapiAttachment.h"
#include "vomsg/tnef/VoMsgTnefAttachData.h"
#include "vomsg/tnef/VoMsgTnefBody.h"
#include "vomsg/tnef/VoMsgTnefContent.h"
#include "vomsg/tnef/VoMsgTnefEntity.h"
#include "vomsg/tnef/VoMsgTnefMessage.h"
#include "vomsg/tnef/VoMsgTnefText.h"
#include "vomsg/tnef/tables/VoMapiTypes.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgTnefEntity";

// New records are at attachment level. Their type ids are those of MS-OXTNEF: 1 is text, 6 is bytes.
constexpr unsigned char kAttachmentLevel = 2;
constexpr unsigned short kTextRecord = 1;
constexpr unsigned short kBytesRecord = 6;

// A file attachment without a position in the text and without a metafile.
unsigned char gRenderData[14] = {0, 0, 1};
constexpr signed char kCopy = 1;

}  // namespace

// --- content

VoErrorCode VoMsgTnefEntity::refuseEdit(bool typeFirst, bool hasArguments, const char* encoding) const {
  const bool isFixed = isValueType();
  if (typeFirst && isFixed) return kVoBadEncoding;
  if (!hasArguments) return kVoBadArgument;
  if (isMultipartEntity()) return kVoNoContent;
  if (equalNoCase(viewOf(encoding), "quoted-printable")) return kVoNotSupported;
  if (isFixed) return kVoBadEncoding;
  const VoMsgTnefMessage* const message = enclosingMessage();
  return message && message->_isInBrokenList() ? kVoTnefMalformed : kVoSuccess;
}

VoErrorCode VoMsgTnefEntity::setRawContent(VoMsgResourceLocator* content, const char* contentType,
                                           const char* encoding) {
  const VoErrorCode refusal = refuseEdit(false, content && contentType, encoding);
  const VoErrorCode code = voFailed(refusal) ? refusal : _setRawContent(content, contentType);
  if (voFailed(code)) VO_LOG(1, _getUUIDString(), "Content not set (error code:%x).", code);
  return code;
}

VoErrorCode VoMsgTnefEntity::setContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding) {
  return setRawContent(content, contentType, encoding);
}

VoErrorCode VoMsgTnefEntity::setTextContent(VoMsgResourceLocator* content, const char* contentType, const char*) {
  return setRawContent(content, contentType, "base64");
}

VoErrorCode VoMsgTnefEntity::replaceContent(VoMsgResourceLocator* content, const char* encoding) {
  const VoErrorCode refusal = refuseEdit(true, content != nullptr, encoding);
  const VoErrorCode code = voFailed(refusal) ? refusal : _setRawContent(content, nullptr);
  if (voFailed(code)) VO_LOG(1, _getUUIDString(), "Content not replaced (error code:%x).", code);
  return code;
}

VoErrorCode VoMsgTnefEntity::replaceTextContent(VoMsgResourceLocator* content, const char*, VoMsgReplaceOption) {
  return replaceContent(content, "base64");
}

// Everything that can fail for want of memory or disk comes first. An attBody record opens its entity itself and holds
// the content; a rendering record behind it would start one more entity when the stream is read again.
VoErrorCode VoMsgTnefEntity::_setRawContent(VoMsgResourceLocator* content, const char* contentType) {
  if (!content) return kVoBadArgument;
  if (isValueType()) return kVoBadEncoding;
  if (isMultipartEntity()) return kVoNoContent;
  return guarded([&]() -> VoErrorCode {
    VoMsgTnefBody* const body = _getTnefBody();
    if (body && body->_isContentBroken()) return kVoTnefMalformed;
    std::unique_ptr<VoMsgResourceLocator> copied = copyOfResource(*content);
    if (!copied) return kVoWriteFailed;
    VoErrorCode code = kVoSuccess;
    if (!hasRecord(kAttBody)) code = _createTnefRenderAttrib();
    // A name that is not ASCII arrives in replacements, but not where it is the present one.
    const char* const name = content->getResourceName("us-ascii");
    const bool isNamed = !voFailed(code) && name && *name;
    if (isNamed && viewOf(content->getResourceName("utf-8")) != viewOf(getFileName("utf-8"))) code = _setFileName(name);
    if (!voFailed(code) && contentType) code = _setContentType(contentType);
    return voFailed(code) ? code : installContent(std::move(copied));
  });
}

VoErrorCode VoMsgTnefEntity::_createTnefRenderAttrib() {
  VoMsgTnefBody* const body = _getTnefBody();
  if (!body) return kVoNoContent;
  if (body->getTnefObjectByNameID(kAttAttachRendData)) return kVoSuccess;
  return guarded([&] {
    auto record = std::make_unique<VoMsgTnefAttachData>(kAttachmentLevel, kBytesRecord, kAttAttachRendData);
    VoMsgResourceLocator* data =
        new VoMsgMemoryResource(gRenderData, sizeof gRenderData, kCopy, "renderdata", "us-ascii");
    record->setContent(data);
    mIsChanged = true;
    return body->appendAttribute(record.release());
  });
}

VoErrorCode VoMsgTnefEntity::_setAttachment(VoMsgResourceLocator* content) {
  if (!content) return kVoBadArgument;
  return guarded([&] {
    std::unique_ptr<VoMsgResourceLocator> copied = copyOfResource(*content);
    return copied ? installContent(std::move(copied)) : kVoWriteFailed;
  });
}

// Content goes where the getters look for it first.
VoErrorCode VoMsgTnefEntity::installContent(std::unique_ptr<VoMsgResourceLocator> content) {
  VoMsgTnefBody* const body = _getTnefBody();
  if (!body) return kVoNoContent;
  VoMsgTnefAttachData* record = body->_getDataRecord();
  VoMsgMapiAttachment* const list = body->_getAttachment();
  VoMsgMapiProperty* const property = list ? list->getMapiPropertyByName(kPrAttachData) : nullptr;
  if (body->_isContentBroken()) return kVoTnefMalformed;
  if (!record && property) {
    VoMsgMapiData* const value = property->getMapiDataAt(0);
    VoMsgTnefMessage* const message = enclosingMessage();
    const OpenSource source(message ? message->mMessageSource.getObject() : nullptr);
    const VoErrorCode code = value ? value->_setContent(content.get(), source.reader()) : kVoNotSupported;
    if (!voFailed(code)) {
      content.release();
      body->_setContent(nullptr);
      mIsChanged = true;
      return code;
    }
    if (code != kVoNotSupported) return code;
  }
  if (!record) {
    record = new VoMsgTnefAttachData(kAttachmentLevel, kBytesRecord, kAttAttachData);
    if (const VoErrorCode code = body->appendAttribute(record); voFailed(code)) return code;
  }
  VoMsgResourceLocator* data = content.release();
  record->setContent(data);
  mIsChanged = true;
  return kVoSuccess;
}

// --- name and type

// Names that are not UTF-16 are in the code page of the stream, where it has a known one.
std::string VoMsgTnefEntity::inCodepage(const char* utf8) const {
  const char* const charset = getCharset();
  const std::string text = charset ? convertedText(utf8, "utf-8", charset) : std::string();
  return text.empty() ? std::string(utf8) : text;
}

VoErrorCode VoMsgTnefEntity::_setFileName(const char* name) {
  if (!name) return kVoBadArgument;
  const char* const present = getFileName("utf-8");
  if (present && viewOf(present) == name) return kVoSuccess;
  VoMsgTnefBody* const body = _getTnefBody();
  if (!body) return kVoNoContent;
  return guarded([&]() -> VoErrorCode {
    const std::string bytes = inCodepage(name);
    VoMsgMapiAttachment* const list = body->_getAttachment();
    if (list && list->_isBroken() && list->_getFileNameProperty()) return kVoTnefMalformed;
    // The first that takes the name is where it is looked for first.
    for (const std::uint16_t id : {kPrAttachLongFilename, kPrAttachFilename}) {
      VoMsgMapiProperty* const property = list && !list->_isBroken() ? list->getMapiPropertyByName(id) : nullptr;
      if (!property) continue;
      const bool isWide = (property->getMapiType() & 0x0FFF) == kPtUnicode;
      const VoErrorCode code = property->setStringData(isWide ? name : bytes.c_str());
      if (code == kVoNoMemory) return code;
      if (!voFailed(code)) break;
    }
    VoMsgTnefAttribute* title = body->getTnefObjectByNameID(kAttAttachTitle);
    if (!title || title->_isBroken()) {
      title = new VoMsgTnefAttribute(kAttachmentLevel, kTextRecord, kAttAttachTitle);
      if (const VoErrorCode code = body->appendAttribute(title); voFailed(code)) return code;
    }
    title->setData(bytes.c_str(), static_cast<unsigned>(bytes.size() + 1));
    mIsChanged = true;
    return kVoSuccess;
  });
}

VoErrorCode VoMsgTnefEntity::_setContentType(const char* contentType) {
  vomsg::detail::noteTreeChange();
  if (!contentType) return kVoBadArgument;
  if (!hasRecord(kAttAttachment)) return kVoSuccess;
  VoMsgTnefBody* const body = _getTnefBody();
  if (!body) return kVoNoContent;
  VoMsgMapiAttachment* const list = body->_getAttachment();
  VoMsgMapiProperty* const property =
      list && !list->_isBroken() ? list->getMapiPropertyByName(kPrAttachMimeTag) : nullptr;
  if (!property || equalNoCase(viewOf(property->getStringData()), contentType)) return kVoSuccess;
  const VoErrorCode code = property->setStringData(contentType);
  if (code == kVoNoMemory) return code;
  mIsChanged = true;
  return kVoSuccess;
}

VoErrorCode VoMsgTnefEntity::setFileName(const char* name) {
  const VoErrorCode refusal = refuseEdit(true, name != nullptr, nullptr);
  return voFailed(refusal) ? refusal : _setFileName(name);
}

VoErrorCode VoMsgTnefEntity::setContentType(const char* contentType) {
  const VoErrorCode refusal = refuseEdit(true, contentType != nullptr, nullptr);
  return voFailed(refusal) ? refusal : _setContentType(contentType);
}

VoErrorCode VoMsgTnefEntity::setAttachment(VoMsgResourceLocator* content) { return replaceContent(content, nullptr); }

// --- children

VoErrorCode VoMsgTnefEntity::removeChildEntityAt(unsigned i) {
  VoMsgEntity* const child = getChildEntityAt(i);
  if (!child) return kVoOutOfRange;
  auto* const entity = dynamic_cast<VoMsgTnefEntity*>(child);
  VoMsgTnefMessage* const message = enclosingMessage();
  VoErrorCode code = message && message->_isInBrokenList() ? kVoTnefMalformed : kVoSuccess;
  if (!voFailed(code) && mType == kMessage && entity && message && entity->isValueType())
    code = message->removeValue(*entity);
  if (voFailed(code)) {
    VO_LOG(1, _getUUIDString(), "Child not removed (error code:%x).", code);
    return code;
  }
  if (!TreeAccess::removeAt(this, i)) return kVoOutOfRange;
  mIsChanged = true;
  return kVoSuccess;
}
