#include "vomsg/tnef/VoMsgTnefAttachData.h"

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/foundation/VoMsgStreamCopy.h"
#include "vomsg/tnef/VoMsgTnefContent.h"
#include "vomsg/tnef/VoMsgTnefCursor.h"
#include "vomsg/tnef/VoMsgTnefEntity.h"
#include "vomsg/tnef/VoTnefInteger.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

using namespace vomsg::detail;

namespace {
constexpr char kLogSource[] = "VoMsgTnefAttachData";
}

VoMsgTnefAttachData::VoMsgTnefAttachData(unsigned char level, unsigned short typeId, unsigned short nameId)
    : VoMsgTnefAttribute(level, typeId, nameId) {}

VoMsgTnefAttachData::~VoMsgTnefAttachData() = default;

VoMsgTnefAttribute* VoMsgTnefAttachData::copy(VoMsgTnefEntity*) {
  auto* const copied = guardedOr<VoMsgTnefAttribute*>(nullptr, [&]() -> VoMsgTnefAttribute* {
    auto other = std::make_unique<VoMsgTnefAttachData>(mLvlType, mTypeID, mNameID);
    other->takeHead(*this);
    if (mpData) {
      other->mpData = copyCString({mpData.get(), mLen});
      if (!other->mpData) return nullptr;
    }
    if (contentResource) {
      other->contentResource = copyOfResource(*contentResource);
      if (!other->contentResource) return nullptr;
    }
    return other.release();
  });
  if (!copied) VO_LOGGED("", kVoNoMemory);
  return copied;
}

VoMsgTnefEntity* VoMsgTnefAttachData::readData(int& result, VoMsgTnefEntity* messageEntity,
                                               VoMsgBufferedReader* source) {
  result = readRecordFrom(*this, source);
  VO_LOGGED(messageEntity ? messageEntity->_getUUIDString() : "", static_cast<VoErrorCode>(result));
  if (voFailed(result) || !tnefRecordRow(mNameID).opensChild) return nullptr;
  return VoMsgTnefEntity::_createChild(result, messageEntity, VoMsgTnefEntity::kRecord);
}

VoErrorCode VoMsgTnefAttachData::_readRecord(TnefCursor& cursor, std::uint32_t offset) {
  mOffset = static_cast<std::int32_t>(offset);
  mLen = cursor.readInt32();
  if (!cursor.skip(mLen)) return kVoReadFailed;
  mCheckSum = cursor.readInt16();
  mSize = static_cast<std::int32_t>(cursor.position() - offset);
  mMissing = cursor.missing();
  return kVoSuccess;
}

bool VoMsgTnefAttachData::seekSourceToBodyPart(VoMsgBufferedReader* source) {
  return source && moveTo(*source, std::uint64_t{static_cast<std::uint32_t>(mOffset)} + kTnefDataOffset);
}

VoErrorCode VoMsgTnefAttachData::getContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target) {
  return VO_LOGGED("", _getContent(source, target));
}

VoErrorCode VoMsgTnefAttachData::_getContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target) {
  return guarded([&]() -> VoErrorCode {
    if (contentResource) {
      if (target) return copyResource(*contentResource, *target);
      target = contentResource.get();
      return kVoSuccess;
    }
    if (mpData) {
      if (target) return writeBytes(*target, mpData.get(), mLen);
      contentResource = decodedResource(mLen);
      if (!contentResource) return kVoWriteFailed;
      const VoErrorCode code = writeBytes(*contentResource, mpData.get(), mLen);
      if (voFailed(code)) return code;
      target = contentResource.get();
      return kVoSuccess;
    }
    if (mLen == 0) return kVoNoContent;
    if (mIsBroken) return kVoTnefMalformed;
    const OpenReader opened(source);
    if (!opened.isOpen() || !seekSourceToBodyPart(source)) return kVoReadFailed;
    if (target) return _copyBodyFromSource(target, source, mLen);
    std::unique_ptr<VoMsgResourceLocator> fetched = decodedResource(mLen);
    if (!fetched) return kVoWriteFailed;
    const VoErrorCode code = _copyBodyFromSource(fetched.get(), source, mLen);
    if (voFailed(code)) return code;
    contentResource = std::move(fetched);
    target = contentResource.get();
    return kVoSuccess;
  });
}

VoErrorCode VoMsgTnefAttachData::_copyBodyFromSource(const VoMsgResourceLocator* target, VoMsgBufferedReader* source,
                                                     unsigned int length) {
  if (!target || !source) return kVoWriteFailed;
  return guarded([&] { return copyStretch(*target, *source, source->getOffset(), length); });
}

VoErrorCode VoMsgTnefAttachData::setContent(VoMsgResourceLocator*& resource) {
  if (!resource) return VO_LOGGED("", kVoBadArgument);
  const unsigned short checkSum = _tnefCalcCheckSum(resource);
  if (contentResource.get() == resource) static_cast<void>(contentResource.release());
  _takeContent(std::unique_ptr<VoMsgResourceLocator>(resource), checkSum);
  return kVoSuccess;
}

void VoMsgTnefAttachData::_takeContent(std::unique_ptr<VoMsgResourceLocator> content, unsigned short checkSum) {
  contentResource = std::move(content);
  mIsModified = true;
  mpData.reset();
  mLen = contentResource->getSize(VoMsgResourceLocator::dataPart);
  mOffset = 0;
  mSize = static_cast<std::int32_t>(mLen + kTnefRecordOverhead);
  mCheckSum = checkSum;
}

void VoMsgTnefAttachData::setData(const char* data, unsigned int size) {
  contentResource.reset();
  VoMsgTnefAttribute::setData(data, size);
}

VoErrorCode VoMsgTnefAttachData::_writeNewData(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) {
  if (!contentResource || mpData) return VoMsgTnefAttribute::_writeNewData(writer, source);
  if (!writer) return kVoWriteFailed;
  writeHead(writer, contentResource->getSize(VoMsgResourceLocator::dataPart));
  const std::unique_ptr<VoMsgBufferedReader> content(contentResource->getInputStream(VoMsgResourceLocator::dataPart));
  const VoErrorCode code = content && content->open() ? copyRest(*content, *writer) : kVoWriteFailed;
  _tnefSetInt16(writer, mCheckSum);
  return code;
}

bool VoMsgTnefAttachData::hasTnefMessage(VoMsgBufferedReader* source) {
  if (!source || mLen < 4 || !seekSourceToBodyPart(source)) return false;
  if (_tnefGetInt32(source) == kVoTnefSignature) return true;
  moveTo(*source, std::uint64_t{source->getOffset()} + mLen - 2);
  return false;
}

void VoMsgTnefAttachData::dumpTnefAttribute(std::FILE* out) {
  if (!out) return;
  std::fprintf(out, "\n%s( VoMsgTnefAttachData )\n", "    ");
  dumpTnefAttributeData(out);
  std::fprintf(out, "    contentResource   : H'%.8x\n",
               static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(contentResource.get())));
}
