// What a caller can change about a TNEF entity: the content, name and type of an attachment, and its being there.
//
// A change may touch several records: a new name stands in the property list and in attAttachTitle, new content may
// come with a rendering record, a name and a type. So a setter first makes ready all that it needs, in a PendingEdit,
// where memory, disk and source can still refuse; then the edit is carried out by steps that cannot fail. A setter that
// fails has changed nothing.
#include <memory>
#include <string>
#include <utility>
#include <vector>

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
#include "vomsg/tnef/VoTnefInteger.h"
#include "vomsg/tnef/tables/VoMapiTypes.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgTnefEntity";

// New records are at attachment level. Their type ids are those of MS-OXTNEF: 1 is text, 6 is bytes.
constexpr unsigned char kAttachmentLevel = 2;
constexpr unsigned short kTextRecord = 1;
constexpr unsigned short kBytesRecord = 6;

// What is ready to be put into an entity's records.
class PendingEdit {
 public:
  explicit PendingEdit(VoMsgTnefBody& body) : mBody(body) {}

  // A rendering record, where there is none.
  void render();
  VoErrorCode rename(const char* name, const std::string& bytes);
  VoErrorCode retype(const char* contentType);
  // Content goes where the getters look for it first. `source` is what the records are read from.
  VoErrorCode replace(std::unique_ptr<VoMsgResourceLocator> content, MessageSource* source);
  bool isEmpty() const { return mTexts.empty() && mRecords.empty() && !mpTitle && !mContent && !mpValue; }
  // Nothing has changed when this throws for want of memory.
  void commit();

 private:
  struct NewText {
    VoMsgMapiData* value;
    VoMsgMapiData next;
  };
  VoErrorCode setText(VoMsgMapiProperty& property, const char* text);

  VoMsgTnefBody& mBody;
  std::vector<NewText> mTexts;
  std::vector<std::unique_ptr<VoMsgTnefAttribute>> mRecords;
  VoMsgTnefAttribute* mpTitle = nullptr;
  CString mTitle;
  unsigned mTitleSize = 0;
  VoMsgTnefAttachData* mpData = nullptr;
  VoMsgMapiData* mpValue = nullptr;
  VoMsgMapiData mValue{kPtBinary, kPrAttachData, true};
  std::unique_ptr<VoMsgResourceLocator> mContent;
  unsigned short mCheckSum = 0;
};

// A file attachment without a position in the text and without a metafile.
unsigned char gRenderData[14] = {0, 0, 1};
constexpr signed char kCopy = 1;

std::unique_ptr<VoMsgTnefAttachData> renderingRecord() {
  auto record = std::make_unique<VoMsgTnefAttachData>(kAttachmentLevel, kBytesRecord, kAttAttachRendData);
  auto data =
      std::make_unique<VoMsgMemoryResource>(gRenderData, unsigned{sizeof gRenderData}, kCopy, "renderdata", "us-ascii");
  record->_takeContent(std::move(data),
                       _tnefCalcCheckSum(reinterpret_cast<const char*>(gRenderData), sizeof gRenderData));
  return record;
}

void PendingEdit::render() {
  if (!mBody.getTnefObjectByNameID(kAttAttachRendData)) mRecords.push_back(renderingRecord());
}

VoErrorCode PendingEdit::setText(VoMsgMapiProperty& property, const char* text) {
  VoMsgMapiData* const value = property.getMapiDataAt(0);
  if (!value) return kVoNoContent;
  VoMsgMapiData next(property.getMapiType(), property.getMapiPropertyName(), true);
  const VoErrorCode code = value->_withStringData(text, next);
  if (!voFailed(code)) mTexts.push_back({value, std::move(next)});
  return code;
}

VoErrorCode PendingEdit::rename(const char* name, const std::string& bytes) {
  VoMsgMapiAttachment* const list = mBody._getAttachment();
  if (list && list->_isBroken() && list->_getFileNameProperty()) return kVoTnefMalformed;
  // The first that takes the name is where it is looked for first.
  for (const std::uint16_t id : {kPrAttachLongFilename, kPrAttachFilename}) {
    VoMsgMapiProperty* const property = list && !list->_isBroken() ? list->getMapiPropertyByName(id) : nullptr;
    if (!property) continue;
    const bool isWide = mapiBaseType(property->getMapiType()) == kPtUnicode;
    const VoErrorCode code = setText(*property, isWide ? name : bytes.c_str());
    if (code == kVoNoMemory) return code;
    if (!voFailed(code)) break;
  }
  mTitleSize = static_cast<unsigned>(bytes.size() + 1);
  mTitle = copyCString({bytes.c_str(), mTitleSize});
  if (!mTitle) return kVoNoMemory;
  mpTitle = mBody.getTnefObjectByNameID(kAttAttachTitle);
  if (mpTitle && !mpTitle->_isBroken()) return kVoSuccess;
  mRecords.push_back(std::make_unique<VoMsgTnefAttribute>(kAttachmentLevel, kTextRecord, kAttAttachTitle));
  mpTitle = mRecords.back().get();
  return kVoSuccess;
}

VoErrorCode PendingEdit::retype(const char* contentType) {
  VoMsgMapiAttachment* const list = mBody._getAttachment();
  VoMsgMapiProperty* const property =
      list && !list->_isBroken() ? list->getMapiPropertyByName(kPrAttachMimeTag) : nullptr;
  if (!property || equalNoCase(viewOf(property->getStringData()), contentType)) return kVoSuccess;
  const VoErrorCode code = setText(*property, contentType);
  return code == kVoNoMemory ? code : VoErrorCode{kVoSuccess};
}

VoErrorCode PendingEdit::replace(std::unique_ptr<VoMsgResourceLocator> content, MessageSource* source) {
  if (mBody._isContentBroken()) return kVoTnefMalformed;
  mpData = mBody._getDataRecord();
  VoMsgMapiAttachment* const list = mBody._getAttachment();
  VoMsgMapiProperty* const property = !mpData && list ? list->getMapiPropertyByName(kPrAttachData) : nullptr;
  if (VoMsgMapiData* const value = property ? property->getMapiDataAt(0) : nullptr) {
    const OpenSource opened(source);
    const VoErrorCode code = value->_withContent(content, opened.reader(), mValue);
    if (!voFailed(code)) mpValue = value;
    if (code != kVoNotSupported) return code;
  }
  if (!sumContent(*content, mCheckSum)) return kVoReadFailed;
  mContent = std::move(content);
  if (mpData) return kVoSuccess;
  auto record = std::make_unique<VoMsgTnefAttachData>(kAttachmentLevel, kBytesRecord, kAttAttachData);
  mpData = record.get();
  mRecords.push_back(std::move(record));
  return kVoSuccess;
}

void PendingEdit::commit() {
  mBody._reserve(mRecords.size());  // the last that may throw
  for (NewText& text : mTexts) *text.value = std::move(text.next);
  if (mpTitle) mpTitle->_takeData(std::move(mTitle), mTitleSize);
  if (mContent) mpData->_takeContent(std::move(mContent), mCheckSum);
  if (mpValue) {
    *mpValue = std::move(mValue);
    mBody._setContent(nullptr);
  }
  for (auto& record : mRecords) mBody.appendAttribute(record.release());
}

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
  return VO_LOGGED(_getUUIDString(), voFailed(refusal) ? refusal : _setRawContent(content, contentType));
}

VoErrorCode VoMsgTnefEntity::setContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding) {
  return setRawContent(content, contentType, encoding);
}

VoErrorCode VoMsgTnefEntity::setTextContent(VoMsgResourceLocator* content, const char* contentType, const char*) {
  return setRawContent(content, contentType, "base64");
}

VoErrorCode VoMsgTnefEntity::replaceContent(VoMsgResourceLocator* content, const char* encoding) {
  const VoErrorCode refusal = refuseEdit(true, content != nullptr, encoding);
  return VO_LOGGED(_getUUIDString(), voFailed(refusal) ? refusal : _setRawContent(content, nullptr));
}

VoErrorCode VoMsgTnefEntity::replaceTextContent(VoMsgResourceLocator* content, const char*, VoMsgReplaceOption) {
  return replaceContent(content, "base64");
}

// Makes an edit ready with `prepare(edit)` and carries it out.
template <class Prepare>
VoErrorCode VoMsgTnefEntity::change(Prepare&& prepare) {
  return guarded([&]() -> VoErrorCode {
    VoMsgTnefBody* const body = _getTnefBody();
    if (!body) return kVoNoContent;
    PendingEdit edit(*body);
    const VoErrorCode code = prepare(edit);
    if (voFailed(code) || edit.isEmpty()) return code;
    edit.commit();
    mIsChanged = true;
    return code;
  });
}

// An attBody record opens its entity itself and holds the content; a rendering record behind it would start one more
// entity when the stream is read again.
VoErrorCode VoMsgTnefEntity::_setRawContent(VoMsgResourceLocator* content, const char* contentType) {
  if (!content) return kVoBadArgument;
  if (isValueType()) return kVoBadEncoding;
  if (isMultipartEntity()) return kVoNoContent;
  return change([&](PendingEdit& edit) -> VoErrorCode {
    std::unique_ptr<VoMsgResourceLocator> copied = copyOfResource(*content);
    if (!copied) return kVoWriteFailed;
    if (!hasRecord(kAttBody)) edit.render();
    VoErrorCode code = kVoSuccess;
    // A name that is not ASCII arrives in replacements, but not where it is the present one.
    const char* const name = content->getResourceName("us-ascii");
    const bool isNamed = name && *name;
    if (isNamed && viewOf(content->getResourceName("utf-8")) != viewOf(getFileName("utf-8")))
      code = prepareName(edit, name);
    if (!voFailed(code) && contentType) code = edit.retype(contentType);
    return voFailed(code) ? code : edit.replace(std::move(copied), messageSource());
  });
}

VoErrorCode VoMsgTnefEntity::_createTnefRenderAttrib() {
  VoMsgTnefBody* const body = _getTnefBody();
  if (body && body->getTnefObjectByNameID(kAttAttachRendData)) return kVoSuccess;
  return change([](PendingEdit& edit) {
    edit.render();
    return kVoSuccess;
  });
}

VoErrorCode VoMsgTnefEntity::_setAttachment(VoMsgResourceLocator* content) {
  if (!content) return kVoBadArgument;
  return change([&](PendingEdit& edit) {
    std::unique_ptr<VoMsgResourceLocator> copied = copyOfResource(*content);
    return copied ? edit.replace(std::move(copied), messageSource()) : VoErrorCode{kVoWriteFailed};
  });
}

MessageSource* VoMsgTnefEntity::messageSource() const {
  const VoMsgTnefMessage* const message = enclosingMessage();
  return message ? message->mMessageSource.getObject() : nullptr;
}

// --- name and type

// Names that are not UTF-16 are in the code page of the stream, where it has a known one.
std::string VoMsgTnefEntity::inCodepage(const char* utf8) const {
  const char* const charset = getCharset();
  const std::string text = charset ? convertedText(utf8, "utf-8", charset) : std::string();
  return text.empty() ? std::string(utf8) : text;
}

template <class Edit>
VoErrorCode VoMsgTnefEntity::prepareName(Edit& edit, const char* name) const {
  const char* const present = getFileName("utf-8");
  return present && viewOf(present) == name ? VoErrorCode{kVoSuccess} : edit.rename(name, inCodepage(name));
}

VoErrorCode VoMsgTnefEntity::_setFileName(const char* name) {
  if (!name) return kVoBadArgument;
  const char* const present = getFileName("utf-8");
  if (present && viewOf(present) == name) return kVoSuccess;
  return change([&](PendingEdit& edit) { return prepareName(edit, name); });
}

VoErrorCode VoMsgTnefEntity::_setContentType(const char* contentType) {
  if (!contentType) return kVoBadArgument;
  if (!hasRecord(kAttAttachment)) return kVoSuccess;
  return change([&](PendingEdit& edit) { return edit.retype(contentType); });
}

VoErrorCode VoMsgTnefEntity::setFileName(const char* name) {
  const VoErrorCode refusal = refuseEdit(true, name != nullptr, nullptr);
  return VO_LOGGED(_getUUIDString(), voFailed(refusal) ? refusal : _setFileName(name));
}

VoErrorCode VoMsgTnefEntity::setContentType(const char* contentType) {
  const VoErrorCode refusal = refuseEdit(true, contentType != nullptr, nullptr);
  return VO_LOGGED(_getUUIDString(), voFailed(refusal) ? refusal : _setContentType(contentType));
}

VoErrorCode VoMsgTnefEntity::setAttachment(VoMsgResourceLocator* content) { return replaceContent(content, nullptr); }

// --- children

VoErrorCode VoMsgTnefEntity::removeChildEntityAt(unsigned i) {
  VoMsgEntity* const child = getChildEntityAt(i);
  if (!child) return VO_LOGGED(_getUUIDString(), kVoOutOfRange);
  auto* const entity = dynamic_cast<VoMsgTnefEntity*>(child);
  VoMsgTnefMessage* const message = enclosingMessage();
  VoErrorCode code = message && message->_isInBrokenList() ? kVoTnefMalformed : kVoSuccess;
  if (!voFailed(code) && mType == kMessage && entity && message && entity->isValueType())
    code = message->removeValue(*entity);
  if (!voFailed(code) && !TreeAccess::removeAt(this, i)) code = kVoOutOfRange;
  if (!voFailed(code)) mIsChanged = true;
  return VO_LOGGED(_getUUIDString(), code);
}
