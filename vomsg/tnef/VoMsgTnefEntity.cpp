#include "vomsg/tnef/VoMsgTnefEntity.h"

#include <memory>
#include <string>
#include <utility>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/entity/VoMsgTreeSources.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgMultiString.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/tnef/VoMsgMapiAttachment.h"
#include "vomsg/tnef/VoMsgMapiList.h"
#include "vomsg/tnef/VoMsgTnefBody.h"
#include "vomsg/tnef/VoMsgTnefContent.h"
#include "vomsg/tnef/VoMsgTnefIndex.h"
#include "vomsg/tnef/VoMsgTnefMessage.h"
#include "vomsg/tnef/VoMsgTnefText.h"
#include "vomsg/tnef/tables/VoTnefEntityKinds.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgTnefEntity";

}  // namespace

VoMsgTnefEntity::VoMsgTnefEntity(TnefEntityType type) : mType(type) {}
VoMsgTnefEntity::~VoMsgTnefEntity() = default;

std::uint32_t VoMsgTnefEntity::getEntityTypeID() const {
  return hasChildEntity() ? kVoEntityTnef | kVoEntityIsContainer : kVoEntityTnef;
}

const char* VoMsgTnefEntity::_getEntityName() { return "VoMsgTnefEntity"; }
bool VoMsgTnefEntity::isMultipartEntity() const { return hasChildEntity(); }

// --- the place in the tree

VoMsgTnefEntity* VoMsgTnefEntity::_createChild(VoMsgTnefEntity* messageEntity, TnefEntityType type) {
  if (!messageEntity) return nullptr;
  auto child = std::make_unique<VoMsgTnefEntity>(type);
  TreeAccess::append(messageEntity, child.get());
  return child.release();
}

VoMsgTnefEntity* VoMsgTnefEntity::_createChild(int& result, VoMsgTnefEntity* messageEntity, TnefEntityType type) {
  VoMsgTnefEntity* child = nullptr;
  const VoErrorCode code = guarded([&] { return child = _createChild(messageEntity, type), kVoSuccess; });
  if (voFailed(code)) result = static_cast<int>(code);
  return child;
}

VoMsgTnefEntity* VoMsgTnefEntity::_createValueChild(VoMsgTnefEntity* messageEntity, unsigned short type,
                                                    unsigned short id, const MapiValueHead& head, bool mayNest) {
  if (!isChildValue(type, id, head) || (head.holdsStream && !mayNest)) return nullptr;
  const TnefEntityType kind = head.holdsStream ? kStream : id == kPrRtfCompressed ? kRichText : kText;
  VoMsgTnefEntity* const child = _createChild(messageEntity, kind);
  if (child) child->setValueOffset(head.offset);
  return child;
}

bool VoMsgTnefEntity::_mayNest(unsigned level) {
  return static_cast<int>(level) < VoMsgMailMessage::getMaxExtractLevel();
}

VoMsgTnefMessage* VoMsgTnefEntity::enclosingMessage() const {
  const VoMsgEntity* const entity = mType == kMessage ? this : mpParent;
  if (!entity || entity->getEntityTypeID() != kVoEntityTnefMessage) return nullptr;
  return const_cast<VoMsgTnefMessage*>(dynamic_cast<const VoMsgTnefMessage*>(entity));
}

VoMsgBufferedReader* VoMsgTnefEntity::getContextSource(int& err) {
  VoMsgTnefMessage* const message = enclosingMessage();
  return message ? message->getContextSource(err) : VoMsgEntity::getContextSource(err);
}

// --- records

bool VoMsgTnefEntity::hasRecord(std::uint16_t nameId) const {
  if (VoMsgTnefBody* const body = mBody.getObject()) return body->getTnefObjectByNameID(nameId) != nullptr;
  const VoMsgTnefMessage* const message = enclosingMessage();
  if (!message || !message->mpIndex || mFirstRecord == kNoRecord) return false;
  return message->mpIndex->find(mFirstRecord, nameId) < message->mpIndex->count();
}

bool VoMsgTnefEntity::hasRecords() const {
  const VoMsgTnefBody* const body = mBody.getObject();
  return body ? body->countAttributes() > 0 : mFirstRecord != kNoRecord;
}

VoMsgTnefBody* VoMsgTnefEntity::_getTnefBody() const {
  if (VoMsgTnefBody* const body = mBody.getObject()) return body;
  return guardedOr<VoMsgTnefBody*>(nullptr, [&]() -> VoMsgTnefBody* {
    VoMsgTnefMessage* const message = enclosingMessage();
    if (!message) return nullptr;
    if (mFirstRecord == kNoRecord) {
      mBody.adopt(std::make_unique<VoMsgTnefBody>());
    } else {
      const OpenSource source(message->mMessageSource.getObject());
      if (!source.reader()) return nullptr;
      mBody.adopt(message->readRow(mFirstRecord, *source.reader()));
    }
    return mBody.getObject();
  });
}

bool VoMsgTnefEntity::_isModified() {
  const VoMsgTnefBody* const body = mBody.getObject();
  return mIsChanged || (body && body->_isModified());
}

bool VoMsgTnefEntity::_isAttachedTnefMessageModified() {
  return mType == kStream && hasChildEntity() && getChildEntity()->isModified();
}

// --- what the content is

const char* VoMsgTnefEntity::getContentType() const {
  if (mType != kMessage && hasRecord(kAttAttachment)) {
    VoMsgTnefBody* const body = _getTnefBody();
    VoMsgMapiAttachment* const list = body ? body->_getAttachment() : nullptr;
    if (const char* const type = list ? list->getContentType() : nullptr) return type;
  }
  return kTnefEntityKinds[mType].contentType;
}

const char* VoMsgTnefEntity::getEncoding() const { return kTnefEntityKinds[mType].encoding; }

const char* VoMsgTnefEntity::getCharset() const {
  const VoMsgTnefMessage* const message = enclosingMessage();
  if (mType != kMessage && hasRecord(kAttOemCodepage))
    if (VoMsgTnefBody* const body = _getTnefBody())
      return VoMsgTnefMessage::codepageName(body->getTnefObjectByNameID(kAttOemCodepage));
  return message ? message->codepageCharset() : nullptr;
}

const char* VoMsgTnefEntity::_getRawFileName() const { return getFileName(nullptr); }

// A name that came as bytes is in the code page of the stream, as far as that is known.
const char* VoMsgTnefEntity::getFileName(const char* charset) const {
  if (!hasRecord(kAttAttachment) && !hasRecord(kAttAttachTitle)) return nullptr;
  return guardedOr<const char*>(nullptr, [&]() -> const char* {
    VoMsgTnefBody* const body = _getTnefBody();
    if (!body) return nullptr;
    VoMsgMapiAttachment* const list = body->_getAttachment();
    const char* name = list ? list->getFileName() : nullptr;
    const char* own = name && mapiBaseType(list->getMapiTypeID()) == kPtUnicode ? "utf-8" : nullptr;
    if (!name)
      if (const VoMsgTnefAttribute* const title = body->getTnefObjectByNameID(kAttAttachTitle)) name = title->getData();
    if (!name || !*name) return nullptr;

    std::unique_ptr<VoMsgMultiString>& cache = body->_fileName();
    if (!cache || viewOf(cache->getString()) != name) cache = std::make_unique<VoMsgMultiString>(name, own);
    if (!own) own = getCharset();
    if (!charset || !own || voIsEqualCharsetName(own, charset)) return cache->getString();
    if (!cache->getString(charset)) {
      const std::string other = convertedText(name, own, charset);
      if (other.empty()) return cache->getString();
      cache->addString(other.c_str(), charset);
    }
    return cache->getString(charset);
  });
}

ValueContent VoMsgTnefEntity::valueContent() const {
  return mType == kStream     ? ValueContent::object
         : mType == kRichText ? ValueContent::compressedRtf
                              : ValueContent::bytes;
}

unsigned VoMsgTnefEntity::getContentSize() const {
  return guardedOr(0u, [&]() -> unsigned {
    if (mType == kMessage || hasChildEntity()) return 0;
    if (!isValueType()) {
      VoMsgTnefBody* const body =
          hasRecord(kAttAttachData) || hasRecord(kAttBody) || hasRecord(kAttAttachment) ? _getTnefBody() : nullptr;
      return body ? body->_getContentSize() : 0;
    }
    const VoMsgTnefBody* const body = mBody.getObject();
    if (body && body->_content()) return body->_content()->getSize(VoMsgResourceLocator::dataPart);
    VoMsgTnefMessage* const message = enclosingMessage();
    if (!message) return 0;
    const OpenSource source(message->mMessageSource.getObject());
    return source.reader() ? valueContentSize(*source.reader(), valueOffset(), valueContent()) : 0;
  });
}

// --- content

const VoMsgResourceLocator* VoMsgTnefEntity::getContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* const content = _getContent(err, target);
  VO_LOGGED(_getUUIDString(), static_cast<VoErrorCode>(err));
  return content;
}

const VoMsgResourceLocator* VoMsgTnefEntity::getTextContent(int& err, const VoMsgResourceLocator* target,
                                                            const char* charset) {
  const VoMsgResourceLocator* const content = _getTextContent(err, target, charset);
  VO_LOGGED(_getUUIDString(), static_cast<VoErrorCode>(err));
  return content;
}

const VoMsgResourceLocator* VoMsgTnefEntity::getRawContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* const content = _getRawContent(err, target);
  VO_LOGGED(_getUUIDString(), static_cast<VoErrorCode>(err));
  return content;
}

const VoMsgResourceLocator* VoMsgTnefEntity::_getRawContent(int& err, const VoMsgResourceLocator* target) {
  return _getContent(err, target);
}

const VoMsgResourceLocator* VoMsgTnefEntity::_getTextContent(int& err, const VoMsgResourceLocator* target,
                                                             const char*) {
  return _getContent(err, target);
}

const VoMsgResourceLocator* VoMsgTnefEntity::_getContent(int& err, const VoMsgResourceLocator* target) {
  const VoErrorCode code =
      target && readsFrom(*this, *target) ? kVoBadArgument : guarded([&] { return fetchContent(target); });
  err = static_cast<int>(code);
  return voFailed(code) ? nullptr : target;
}

VoErrorCode VoMsgTnefEntity::fetchContent(const VoMsgResourceLocator*& target) {
  if (mType == kMessage || hasChildEntity()) return kVoNoContent;
  if (isValueType()) return fetchValue(target);
  if (!hasRecord(kAttAttachData) && !hasRecord(kAttBody) && !hasRecord(kAttAttachment)) return kVoNoContent;
  VoMsgTnefBody* const body = _getTnefBody();
  if (!body) return kVoReadFailed;
  VoMsgTnefMessage* const message = enclosingMessage();
  const OpenSource source(message ? message->mMessageSource.getObject() : nullptr);
  return body->_getRawContent(source.reader(), target);
}

VoErrorCode VoMsgTnefEntity::fetchValue(const VoMsgResourceLocator*& target) {
  VoMsgTnefMessage* const message = enclosingMessage();
  if (!message) return kVoReadFailed;
  VoMsgTnefBody* const body = _getTnefBody();
  if (!body) return kVoReadFailed;
  if (const VoMsgResourceLocator* const content = body->_content()) {
    if (target) return copyResource(*content, *target);
    target = content;
    return kVoSuccess;
  }
  const OpenSource source(message->mMessageSource.getObject());
  if (!source.reader()) return kVoReadFailed;
  const ValueContent kind = valueContent();
  if (target) return copyValueContent(CountedTarget(*target).target(), *source.reader(), valueOffset(), kind);
  auto content = decodedResource(valueContentSize(*source.reader(), valueOffset(), kind));
  if (!content) return kVoWriteFailed;
  const VoErrorCode code = copyValueContent(*content, *source.reader(), valueOffset(), kind);
  if (voFailed(code)) return code;
  target = content.get();
  body->_setContent(std::move(content));
  return kVoSuccess;
}

// --- writing and copying

VoErrorCode VoMsgTnefEntity::_writeToResource(VoMsgBufferedWriter* writer) {
  VoMsgTnefMessage* const message = enclosingMessage();
  return message ? message->_writeEntityToResource(this, writer) : VoErrorCode{kVoReadFailed};
}

VoErrorCode VoMsgTnefEntity::_writeTnefMessageToResource(VoMsgBufferedWriter* writer) {
  return hasChildEntity() ? getChildEntity()->_writeToResource(writer) : kVoSuccess;
}

void VoMsgTnefEntity::takeOver(const VoMsgTnefEntity& from) {
  mType = from.mType;
  setValueOffset(from.valueOffset());
  mFirstRecord = from.mFirstRecord;
  mIsChanged = from.mIsChanged;
}

VoErrorCode VoMsgTnefEntity::copy(VoMsgEntity* from) {
  auto* const other = dynamic_cast<VoMsgTnefEntity*>(from);
  if (!other) return VO_LOGGED(_getUUIDString(), kVoBadArgument);
  return VO_LOGGED(_getUUIDString(), guarded([&]() -> VoErrorCode {
                     VoMsgTnefBody* const body = other->_getTnefBody();
                     if (body) {
                       std::unique_ptr<VoMsgTnefBody> copied(body->copy(this));
                       if (!copied) return kVoNoMemory;
                       mBody.adopt(std::move(copied));
                     }
                     takeOver(*other);
                     mFirstRecord = kNoRecord;
                     return kVoSuccess;
                   }));
}

void VoMsgTnefEntity::dumpEntityInf(std::FILE* out) {
  if (!out) return;
  _dumpEntityInf(out);
  std::fprintf(out, "TnefEntityType    : D'%u\n", unsigned{mType});
  if (VoMsgTnefBody* const body = _getTnefBody()) body->dumpTnefBody(out);
}

void VoMsgTnefEntity::dumpAttachedTnefMessageInf(std::FILE* out) {
  auto* const message = dynamic_cast<VoMsgTnefMessage*>(getChildEntity());
  if (out && message) message->dumpMessageInf(out);
}
