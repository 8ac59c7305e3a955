#include "vomsg/tnef/VoMsgMapiProperty.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/tnef/VoMsgMapiChildren.h"
#include "vomsg/tnef/VoMsgMapiList.h"
#include "vomsg/tnef/VoMsgTnefCursor.h"
#include "vomsg/tnef/VoTnefInteger.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgMapiProperty";

// The least that a value takes in a stream, the last one apart, which the end may have cut short.
std::uint32_t smallestValue(std::uint16_t type) {
  const MapiTypeRow row = mapiTypeRow(type);
  return std::max(4u, unsigned{row.size} + row.filler);
}

}  // namespace

VoMsgMapiProperty::VoMsgMapiProperty() = default;
VoMsgMapiProperty::VoMsgMapiProperty(VoMsgMapiProperty&& other) noexcept = default;
VoMsgMapiProperty& VoMsgMapiProperty::operator=(VoMsgMapiProperty&& other) noexcept = default;
VoMsgMapiProperty::~VoMsgMapiProperty() = default;

// The cursor ends where it was.
void VoMsgMapiProperty::takeHead(TnefCursor& cursor, const MapiPropertyHead& head) {
  mMapiType = head.type;
  mMapiName = head.id;
  if (!head.isNamed()) return;
  mpNamedPart = std::make_unique<NamedPart>();
  std::memcpy(mpNamedPart->propertySet, head.propertySet, sizeof head.propertySet);
  mpNamedPart->kind = head.nameKind;
  mpNamedPart->number = head.nameNumber;
  if (!head.hasTextName()) return;
  const std::uint32_t position = cursor.position();
  mpNamedPart->name.resize(head.nameNumber);
  cursor.moveTo(head.nameOffset);
  cursor.read(mpNamedPart->name.data(), head.nameNumber);
  cursor.moveTo(position);
}

// The list is sized once, for what the count claims but no more than what is left could hold: growing it would hold
// three times as much for a moment.
VoErrorCode VoMsgMapiProperty::_readProperty(TnefCursor& cursor, MapiListWalk& walk, MapiChildren* children) {
  const std::uint32_t count = walk.property().valueCount;
  takeHead(cursor, walk.property());
  mMapiDataList.reserve(std::min(count, cursor.left() / smallestValue(mMapiType) + 1));
  for (std::uint32_t i = 0; i < count; ++i) {
    MapiListWalk::Event event;
    VoErrorCode code = walk.next(cursor, event);
    VoMsgMapiData value(mMapiType, mMapiName, false);
    if (!voFailed(code)) code = value._readValue(cursor, walk.value(), children);
    if (voFailed(code)) return code;
    mMapiDataList.push_back(std::move(value));
  }
  return kVoSuccess;
}

VoMsgTnefEntity* VoMsgMapiProperty::readMapiProperty(int& result, VoMsgTnefEntity* messageEntity,
                                                     VoMsgBufferedReader* source) {
  MapiChildren children(messageEntity, source);
  const VoErrorCode code = children.read([&](TnefCursor& cursor) {
    MapiListWalk walk(1);
    MapiListWalk::Event event;
    VoErrorCode read = walk.next(cursor, event);
    if (!voFailed(read)) read = _readProperty(cursor, walk, &children);
    return voFailed(read) ? read : walk.next(cursor, event);
  });
  result = static_cast<int>(VO_LOGGED(children.tag(), code));
  return voFailed(code) ? nullptr : children.last();
}

VoErrorCode VoMsgMapiProperty::writeMapiProperty(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source,
                                                 unsigned short& checkSum) {
  return VO_LOGGED("", _write(writer, source, checkSum));
}

VoErrorCode VoMsgMapiProperty::_write(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source,
                                      unsigned short& checkSum) {
  if (!writer) return kVoWriteFailed;
  const auto writeBytes = [&](const char* data, std::uint32_t length) {
    writer->write(data, length);
    checkSum = static_cast<unsigned short>(checkSum + _tnefCalcCheckSum(data, length));
  };
  _tnefSetInt16(writer, mMapiType, checkSum);
  _tnefSetInt16(writer, mMapiName, checkSum);
  if (mpNamedPart) {
    writeBytes(mpNamedPart->propertySet, sizeof mpNamedPart->propertySet);
    _tnefSetInt32(writer, mpNamedPart->kind, checkSum);
    _tnefSetInt32(writer, mpNamedPart->number, checkSum);
    if (mpNamedPart->kind == kMapiTextName) {
      const auto length = static_cast<std::uint32_t>(mpNamedPart->name.size());
      writeBytes(mpNamedPart->name.data(), length);
      writeBytes("\0\0\0", mapiPadding(length));
    }
  }
  if (_isMultipleValue()) _tnefSetInt32(writer, countMapiData(), checkSum);
  for (VoMsgMapiData& value : mMapiDataList) {
    const VoErrorCode code = value._write(writer, source, checkSum);
    if (voFailed(code)) return code;
  }
  return kVoSuccess;
}

const char* VoMsgMapiProperty::getStringData() const {
  const unsigned base = mapiBaseType(mMapiType);
  if (mMapiDataList.empty() || (base != kPtString8 && base != kPtUnicode)) return nullptr;
  return guardedOr<const char*>(nullptr, [&] {
    std::string text = mMapiDataList.front().getStringData();
    if (!mpText || *mpText != text) mpText = std::make_unique<std::string>(std::move(text));
    return mpText->c_str();
  });
}

VoErrorCode VoMsgMapiProperty::setStringData(const char* text) {
  return mMapiDataList.empty() ? VO_LOGGED("", kVoNoContent) : mMapiDataList.front().setStringData(text);
}

VoErrorCode VoMsgMapiProperty::getRawContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target) {
  return VO_LOGGED("", _getRawContent(source, target));
}

VoErrorCode VoMsgMapiProperty::_getRawContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target) {
  return mMapiDataList.empty() ? kVoNoContent : mMapiDataList.front()._getContent(source, target);
}

VoMsgMapiData* VoMsgMapiProperty::getMapiDataAt(std::uint32_t i) {
  return i < mMapiDataList.size() ? &mMapiDataList[i] : nullptr;
}

const char* VoMsgMapiProperty::getPropertySet() const { return mpNamedPart ? mpNamedPart->propertySet : nullptr; }
std::uint32_t VoMsgMapiProperty::getNameKind() const { return mpNamedPart ? mpNamedPart->kind : 0; }
std::uint32_t VoMsgMapiProperty::getNameNumber() const { return mpNamedPart ? mpNamedPart->number : 0; }
std::string VoMsgMapiProperty::getNameText() const {
  return guardedOr(std::string(), [&] { return mpNamedPart ? mpNamedPart->name : std::string(); });
}

bool VoMsgMapiProperty::isModified() const {
  return mHasLostValues || std::any_of(mMapiDataList.begin(), mMapiDataList.end(),
                                       [](const VoMsgMapiData& value) { return value.isModified(); });
}

bool VoMsgMapiProperty::hasContent() const { return mMapiName == kPrAttachData; }

bool VoMsgMapiProperty::hasAttachedTnefMessage() const {
  return std::any_of(mMapiDataList.begin(), mMapiDataList.end(),
                     [](const VoMsgMapiData& value) { return value.hasAttachedTnefMessage(); });
}

bool VoMsgMapiProperty::_isUserDefinedNameToID() const { return mMapiName >= kFirstNamedProperty; }

bool VoMsgMapiProperty::_isMultipleValue() const { return isCountedMapiType(mMapiType); }

std::uint64_t VoMsgMapiProperty::_getSize() const {
  std::uint64_t size = 4;
  if (mpNamedPart) {
    const auto length = static_cast<std::uint32_t>(mpNamedPart->name.size());
    size += sizeof mpNamedPart->propertySet + 8 + length + mapiPadding(length);
  }
  if (_isMultipleValue()) size += 4;
  for (const VoMsgMapiData& value : mMapiDataList) size += value._getSize();
  return size;
}

bool VoMsgMapiProperty::copy(const VoMsgMapiProperty& from) {
  return guardedOr(false, [&] {
    mMapiType = from.mMapiType;
    mMapiName = from.mMapiName;
    mHasLostValues = from.mHasLostValues;
    mpNamedPart = from.mpNamedPart ? std::make_unique<NamedPart>(*from.mpNamedPart) : nullptr;
    mMapiDataList.clear();
    mMapiDataList.reserve(from.mMapiDataList.size());
    for (const VoMsgMapiData& value : from.mMapiDataList) {
      mMapiDataList.emplace_back(mMapiType, mMapiName, false);
      if (!mMapiDataList.back().copy(value)) return false;
    }
    return true;
  });
}

void VoMsgMapiProperty::dumpMapiProperty(std::FILE* out) const {
  if (!out) return;
  std::fprintf(out, "      mMapiType         : H'%.4x\n", unsigned{mMapiType});
  std::fprintf(out, "      mMapiName         : H'%.4x\n", unsigned{mMapiName});
  std::fprintf(out, "      mNumOfMapiData    : D'%u\n", countMapiData());
  for (const VoMsgMapiData& value : mMapiDataList) value.dumpMapiData(out);
}

VoMsgMapiData* VoMsgMapiProperty::_findValue(std::uint32_t offset) {
  const auto at =
      std::lower_bound(mMapiDataList.begin(), mMapiDataList.end(), offset,
                       [](const VoMsgMapiData& value, std::uint32_t wanted) { return value._getOffset() < wanted; });
  return at != mMapiDataList.end() && at->_getOffset() == offset ? &*at : nullptr;
}

bool VoMsgMapiProperty::_removeValue(std::uint32_t offset) {
  VoMsgMapiData* const value = _findValue(offset);
  if (!value) return false;
  mMapiDataList.erase(mMapiDataList.begin() + (value - mMapiDataList.data()));
  return mHasLostValues = true;
}
