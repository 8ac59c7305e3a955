#include "vomsg/tnef/VoMsgMapiAttachment.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/tnef/VoMsgMapiChildren.h"
#include "vomsg/tnef/VoMsgMapiList.h"
#include "vomsg/tnef/VoMsgTnefCursor.h"
#include "vomsg/tnef/VoTnefInteger.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgMapiAttachment";
constexpr std::uint32_t kSmallestProperty = 8;  // type, id, and a number of values or one value

}  // namespace

VoMsgMapiAttachment::VoMsgMapiAttachment(unsigned char level, unsigned short typeId, unsigned short nameId)
    : VoMsgTnefAttribute(level, typeId, nameId) {}

VoMsgMapiAttachment::~VoMsgMapiAttachment() = default;

VoMsgTnefAttribute* VoMsgMapiAttachment::copy(VoMsgTnefEntity*) {
  auto* const copied = guardedOr<VoMsgTnefAttribute*>(nullptr, [&]() -> VoMsgTnefAttribute* {
    auto other = std::make_unique<VoMsgMapiAttachment>(mLvlType, mTypeID, mNameID);
    other->takeHead(*this);
    other->mNumOfProperties = mNumOfProperties;
    other->mpMapiPropertyList.reserve(mpMapiPropertyList.size());
    for (const VoMsgMapiProperty& property : mpMapiPropertyList) {
      other->mpMapiPropertyList.emplace_back();
      if (!other->mpMapiPropertyList.back().copy(property)) return nullptr;
    }
    return other.release();
  });
  if (!copied) VO_LOGGED("", kVoNoMemory);
  return copied;
}

VoErrorCode VoMsgMapiAttachment::readList(TnefCursor& cursor, std::uint32_t offset, MapiChildren* children) {
  mOffset = static_cast<std::int32_t>(offset);
  mLen = cursor.readInt32();
  const std::uint32_t dataOffset = cursor.position();
  mNumOfProperties = cursor.readInt32();
  mpMapiPropertyList.clear();
  mpMapiPropertyList.reserve(std::min(mNumOfProperties, cursor.left() / kSmallestProperty + 1));
  MapiListWalk walk(mNumOfProperties);
  for (;;) {
    MapiListWalk::Event event;
    VoErrorCode code = walk.next(cursor, event);
    if (voFailed(code)) return code;
    if (event == MapiListWalk::Event::end) break;
    VoMsgMapiProperty property;
    code = property._readProperty(cursor, walk, children);
    if (voFailed(code)) return code;
    mpMapiPropertyList.push_back(std::move(property));
  }
  finishList(cursor, dataOffset, mLen);
  mCheckSum = cursor.readInt16();
  mSize = static_cast<std::int32_t>(cursor.position() - offset);
  mMissing = cursor.missing();
  return kVoSuccess;
}

VoErrorCode VoMsgMapiAttachment::_readRecord(TnefCursor& cursor, std::uint32_t offset) {
  return readList(cursor, offset, nullptr);
}

VoMsgTnefEntity* VoMsgMapiAttachment::readData(int& result, VoMsgTnefEntity* messageEntity,
                                               VoMsgBufferedReader* source) {
  MapiChildren children(messageEntity, source);
  const VoErrorCode code = children.read([&](TnefCursor& cursor) {
    const std::uint32_t position = cursor.position();
    return readList(cursor, position - std::min(position, kTnefIdBytes), &children);
  });
  result = static_cast<int>(VO_LOGGED(children.tag(), code));
  return voFailed(code) ? nullptr : children.last();
}

bool VoMsgMapiAttachment::_isModified() {
  return mIsModified || std::any_of(mpMapiPropertyList.begin(), mpMapiPropertyList.end(),
                                    [](const VoMsgMapiProperty& property) { return property.isModified(); });
}

void VoMsgMapiAttachment::setData(const char*, unsigned int) {}

VoErrorCode VoMsgMapiAttachment::_writeNewData(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) {
  if (!writer) return kVoWriteFailed;
  const std::uint64_t length = _getDataSize() + 4;
  if (length > kMostTnefBytes) return kVoWriteFailed;
  mLen = static_cast<std::uint32_t>(length);
  mNumOfProperties = countProperties();
  writeHead(writer, mLen);
  mCheckSum = 0;
  unsigned short checkSum = 0;
  _tnefSetInt32(writer, mNumOfProperties, checkSum);
  for (VoMsgMapiProperty& property : mpMapiPropertyList) {
    const VoErrorCode code = property._write(writer, source, checkSum);
    if (voFailed(code)) return code;
  }
  mCheckSum = checkSum;
  _tnefSetInt16(writer, mCheckSum);
  return kVoSuccess;
}

// A length that the end belied is a new one now, so the list is written anew.
VoErrorCode VoMsgMapiAttachment::_writeWhole(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) {
  return mMissing > 0 && !mIsBroken ? _writeNewData(writer, source) : _writeAsIs(writer, source);
}

VoMsgMapiProperty* VoMsgMapiAttachment::getMapiPropertyAt(std::uint32_t i) {
  return i < mpMapiPropertyList.size() ? &mpMapiPropertyList[i] : nullptr;
}

VoMsgMapiProperty* VoMsgMapiAttachment::getMapiPropertyByName(unsigned short id) {
  for (VoMsgMapiProperty& property : mpMapiPropertyList)
    if (property.getMapiPropertyName() == id) return &property;
  return nullptr;
}

VoMsgMapiProperty* VoMsgMapiAttachment::_getFileNameProperty() {
  for (const std::uint16_t id : {kPrAttachLongFilename, kPrAttachFilename}) {
    VoMsgMapiProperty* const property = getMapiPropertyByName(id);
    const char* const name = property ? property->getStringData() : nullptr;
    if (name && *name) return property;
  }
  return nullptr;
}

const char* VoMsgMapiAttachment::getFileName() {
  VoMsgMapiProperty* const property = _getFileNameProperty();
  return property ? property->getStringData() : nullptr;
}

const char* VoMsgMapiAttachment::getContentType() {
  VoMsgMapiProperty* const property = getMapiPropertyByName(kPrAttachMimeTag);
  const char* const type = property ? property->getStringData() : nullptr;
  return type && *type ? type : nullptr;
}

unsigned short VoMsgMapiAttachment::getMapiTypeID() {
  VoMsgMapiProperty* const property = _getFileNameProperty();
  return property ? property->getMapiType() : static_cast<unsigned short>(0);
}

bool VoMsgMapiAttachment::hasContent() { return getMapiPropertyByName(kPrAttachData) != nullptr; }

bool VoMsgMapiAttachment::hasAttachedTnefMessage() {
  return std::any_of(mpMapiPropertyList.begin(), mpMapiPropertyList.end(),
                     [](const VoMsgMapiProperty& property) { return property.hasAttachedTnefMessage(); });
}

std::uint64_t VoMsgMapiAttachment::_getDataSize() const {
  std::uint64_t size = 0;
  for (const VoMsgMapiProperty& property : mpMapiPropertyList) size += property._getSize();
  return size;
}

VoMsgMapiData* VoMsgMapiAttachment::_findValue(std::uint32_t offset) {
  for (VoMsgMapiProperty& property : mpMapiPropertyList)
    if (VoMsgMapiData* const value = property._findValue(offset)) return value;
  return nullptr;
}

bool VoMsgMapiAttachment::_removeValue(std::uint32_t offset) {
  for (auto at = mpMapiPropertyList.begin(); at != mpMapiPropertyList.end(); ++at) {
    if (!at->_removeValue(offset)) continue;
    if (at->countMapiData() == 0) mpMapiPropertyList.erase(at);
    return mIsModified = true;
  }
  return false;
}

void VoMsgMapiAttachment::dumpTnefAttribute(std::FILE* out) {
  if (!out) return;
  std::fprintf(out, "\n%s( VoMsgMapiAttachment )\n", "    ");
  dumpTnefAttributeData(out);
  std::fprintf(out, "    mNumOfProperties  : D'%u\n", mNumOfProperties);
  for (const VoMsgMapiProperty& property : mpMapiPropertyList) property.dumpMapiProperty(out);
}
