#include "vomsg/tnef/VoMsgTnefBody.h"

#include <algorithm>
#include <iterator>

#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/tnef/VoMsgMapiAttachment.h"
#include "vomsg/tnef/VoMsgTnefAttachData.h"
#include "vomsg/tnef/tables/VoMapiTypes.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

using namespace vomsg::detail;

namespace {
constexpr char kLogSource[] = "VoMsgTnefBody";
}

VoMsgTnefBody::VoMsgTnefBody() = default;
VoMsgTnefBody::~VoMsgTnefBody() = default;

VoErrorCode VoMsgTnefBody::appendAttribute(VoMsgTnefAttribute* attribute) {
  std::unique_ptr<VoMsgTnefAttribute> owner(attribute);
  if (!owner) return VO_LOGGED("", kVoBadArgument);
  return VO_LOGGED("", guarded([&] {
                     const bool beforeLast = !mAttributes.empty() && mAttributes.back()->_isBroken();
                     mAttributes.insert(mAttributes.end() - (beforeLast ? 1 : 0), std::move(owner));
                     return kVoSuccess;
                   }));
}

VoMsgTnefAttribute* VoMsgTnefBody::getAttributeAt(std::size_t i) {
  return i < mAttributes.size() ? mAttributes[i].get() : nullptr;
}

VoMsgTnefAttribute* VoMsgTnefBody::getTnefObjectByNameID(unsigned short nameId) {
  for (const auto& attribute : mAttributes)
    if (attribute->getTnefNameID() == nameId) return attribute.get();
  return nullptr;
}

VoMsgMapiAttachment* VoMsgTnefBody::_getAttachment() {
  return dynamic_cast<VoMsgMapiAttachment*>(getTnefObjectByNameID(kAttAttachment));
}

VoMsgTnefAttachData* VoMsgTnefBody::_getDataRecord() {
  VoMsgTnefAttribute* record = getTnefObjectByNameID(kAttAttachData);
  if (!record) record = getTnefObjectByNameID(kAttBody);
  return dynamic_cast<VoMsgTnefAttachData*>(record);
}

bool VoMsgTnefBody::_isContentBroken() {
  if (const VoMsgTnefAttachData* const record = _getDataRecord()) return record->_isBroken();
  VoMsgMapiAttachment* const list = _getAttachment();
  return list && list->_isBroken() && list->hasContent();
}

VoErrorCode VoMsgTnefBody::writeBodyPart(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) {
  return VO_LOGGED("", _writeRecords(writer, source));
}

VoErrorCode VoMsgTnefBody::_writeRecords(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) {
  for (const auto& attribute : mAttributes) {
    const bool isLast = attribute == mAttributes.back();
    const VoErrorCode code = isLast ? attribute->_writeAsIs(writer, source) : attribute->_writeWhole(writer, source);
    if (voFailed(code)) return code;
  }
  return kVoSuccess;
}

VoErrorCode VoMsgTnefBody::getRawContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target) {
  return VO_LOGGED("", _getRawContent(source, target));
}

VoErrorCode VoMsgTnefBody::_getRawContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target) {
  if (VoMsgTnefAttachData* const record = _getDataRecord()) return record->_getContent(source, target);
  VoMsgMapiAttachment* const list = _getAttachment();
  VoMsgMapiProperty* const property = list ? list->getMapiPropertyByName(kPrAttachData) : nullptr;
  if (!property) return kVoNoContent;
  if (!target && mContent) {
    target = mContent.get();
    return kVoSuccess;
  }
  const bool isMine = !target;
  const VoErrorCode code = property->_getRawContent(source, target);
  if (isMine && !voFailed(code)) mContent.reset(const_cast<VoMsgResourceLocator*>(target));
  return code;
}

std::uint32_t VoMsgTnefBody::_getContentSize() {
  if (VoMsgTnefAttachData* const record = _getDataRecord()) return record->getDataSize();
  VoMsgMapiAttachment* const list = _getAttachment();
  VoMsgMapiProperty* const property = list ? list->getMapiPropertyByName(kPrAttachData) : nullptr;
  VoMsgMapiData* const value = property ? property->getMapiDataAt(0) : nullptr;
  const MapiForm form = property ? mapiTypeRow(property->getMapiType()).form : MapiForm::unsupported;
  if (!value || (form != MapiForm::prefixed && form != MapiForm::object)) return 0;
  const std::uint32_t idSize = form == MapiForm::object ? kInterfaceIdBytes : 0;
  return value->getDataSize() - std::min(value->getDataSize(), idSize);
}

VoMsgTnefBody* VoMsgTnefBody::copy(VoMsgTnefEntity* entity) {
  return guardedOr<VoMsgTnefBody*>(nullptr, [&]() -> VoMsgTnefBody* {
    auto other = std::make_unique<VoMsgTnefBody>();
    other->mAttributes.reserve(mAttributes.size());
    for (const auto& attribute : mAttributes) {
      other->mAttributes.emplace_back(attribute->copy(entity));
      if (!other->mAttributes.back()) return nullptr;
    }
    return other.release();
  });
}

void VoMsgTnefBody::dumpTnefBody(std::FILE* out) {
  if (!out) return;
  std::fprintf(out, "%sBodyType : VoMsgTnefBody\n", "    ");
  for (const auto& attribute : mAttributes) attribute->dumpTnefAttribute(out);
}

bool VoMsgTnefBody::_isModified() const {
  return std::any_of(mAttributes.begin(), mAttributes.end(),
                     [](const auto& attribute) { return attribute->_isModified(); });
}

VoMsgMapiAttachment* VoMsgTnefBody::_findList(std::uint32_t offset) {
  for (const auto& attribute : mAttributes) {
    if (attribute->_isBroken()) continue;
    const auto start = static_cast<std::uint32_t>(attribute->getOffset());
    if (offset < start || offset - start >= static_cast<std::uint32_t>(attribute->getSize())) continue;
    if (auto* const list = dynamic_cast<VoMsgMapiAttachment*>(attribute.get())) return list;
  }
  return nullptr;
}

void VoMsgTnefBody::_moveAttributesTo(VoMsgTnefBody& other) {
  other.mAttributes.insert(other.mAttributes.end(), std::make_move_iterator(mAttributes.begin()),
                           std::make_move_iterator(mAttributes.end()));
  mAttributes.clear();
}
