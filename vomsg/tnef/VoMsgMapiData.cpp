#include "vomsg/tnef/VoMsgMapiData.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgDump.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/tnef/VoMsgMapiChildren.h"
#include "vomsg/tnef/VoMsgMapiList.h"
#include "vomsg/tnef/VoMsgTnefContent.h"
#include "vomsg/tnef/VoMsgTnefCursor.h"
#include "vomsg/tnef/VoMsgTnefEntity.h"
#include "vomsg/tnef/VoMsgTnefText.h"
#include "vomsg/tnef/VoTnefInteger.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgMapiData";
constexpr unsigned kBlockSlack = 16;  // so that a text always ends in NULs

void addCheckSum(unsigned short& checkSum, const char* data, unsigned length) {
  checkSum = static_cast<unsigned short>(checkSum + _tnefCalcCheckSum(data, length));
}

}  // namespace

struct VoMsgMapiData::Replacement {
  char interfaceId[kInterfaceIdBytes] = {};
  std::unique_ptr<VoMsgResourceLocator> content;
};

VoMsgMapiData::VoMsgMapiData(unsigned short type, unsigned short id, bool isModified)
    : mMapiType(type), mMapiName(id), mIsModified(isModified), mInline{} {}

VoMsgMapiData::VoMsgMapiData(VoMsgMapiData&& other) noexcept
    : VoMsgMapiData(other.mMapiType, other.mMapiName, other.mIsModified) {
  *this = std::move(other);
}

VoMsgMapiData& VoMsgMapiData::operator=(VoMsgMapiData&& other) noexcept {
  if (this == &other) return *this;
  release();
  mMapiType = other.mMapiType;
  mMapiName = other.mMapiName;
  mMapiPaddingSize = other.mMapiPaddingSize;
  mIsModified = other.mIsModified;
  mHasTnefMessage = other.mHasTnefMessage;
  mOffset = other.mOffset;
  mSourceSize = other.mSourceSize;
  mMapiDataSize = other.mMapiDataSize;
  mHolding = std::exchange(other.mHolding, Holding::nothing);
  std::memcpy(mInline, other.mInline, sizeof mInline);
  return *this;
}

VoMsgMapiData::~VoMsgMapiData() { release(); }

void VoMsgMapiData::release() {
  if (mHolding == Holding::block) std::free(mpBlock);
  if (mHolding == Holding::replaced) delete mpReplacement;
  mHolding = Holding::nothing;
}

char* VoMsgMapiData::takeBlock(std::uint32_t length) {
  release();
  mMapiDataSize = length;
  mMapiPaddingSize = mapiPadding(length);
  if (length == 0) return nullptr;
  char* const block = static_cast<char*>(std::malloc(std::size_t{length} + kBlockSlack));
  if (!block) {
    noteShortage(kVoNoMemory);
    return nullptr;
  }
  std::memset(block + length, 0, kBlockSlack);
  mpBlock = block;
  mHolding = Holding::block;
  return block;
}

VoMsgTnefEntity* VoMsgMapiData::readMapiData(int& result, VoMsgTnefEntity* messageEntity, VoMsgBufferedReader* source) {
  MapiChildren children(messageEntity, source);
  const VoErrorCode code = children.read([&](TnefCursor& cursor) {
    MapiValueHead head;
    VoErrorCode read = readValueHead(cursor, mMapiType, head);
    if (!voFailed(read)) read = _readValue(cursor, head, &children);
    if (!voFailed(read)) cursor.moveTo(head.end);
    return read;
  });
  result = static_cast<int>(VO_LOGGED(children.tag(), code));
  return voFailed(code) ? nullptr : children.last();
}

VoErrorCode VoMsgMapiData::_readValue(TnefCursor& cursor, const MapiValueHead& head, MapiChildren* children) {
  const VoErrorCode made =
      children ? children->make(mMapiType, mMapiName, head, cursor.readsStreams()) : VoErrorCode{kVoSuccess};
  if (voFailed(made)) return made;
  release();
  mOffset = head.offset;
  mSourceSize = head.sourceSize();
  mHasTnefMessage = head.holdsStream && cursor.readsStreams();
  mMapiDataSize = head.length;
  mMapiPaddingSize = head.padding;
  if (mapiTypeRow(mMapiType).form == MapiForm::fixed) {
    cursor.read(mInline, head.length);
    mHolding = Holding::inlined;
  } else if (_isStringOrBinary() && !isChildValue(mMapiType, mMapiName, head) && head.length > 0) {
    char* const block = takeBlock(head.length);
    if (!block) return kVoNoMemory;
    cursor.read(block, head.length);
  }
  return kVoSuccess;
}

bool VoMsgMapiData::_isStringOrBinary() const { return mapiTypeRow(mMapiType).form == MapiForm::prefixed; }

const char* VoMsgMapiData::getData() const {
  return mHolding == Holding::inlined ? mInline : mHolding == Holding::block ? mpBlock : nullptr;
}

std::string VoMsgMapiData::getStringData() const {
  const unsigned base = mapiBaseType(mMapiType);
  if (mHolding != Holding::block || (base != kPtString8 && base != kPtUnicode)) return {};
  return guardedOr(std::string(), [&] {
    const std::string_view bytes(mpBlock, mMapiDataSize);
    return base == kPtUnicode ? utf8FromUtf16(bytes) : std::string(bytes.substr(0, bytes.find('\0')));
  });
}

VoErrorCode VoMsgMapiData::setStringData(const char* text) {
  VoMsgMapiData next(mMapiType, mMapiName, true);
  const VoErrorCode code = _withStringData(text, next);
  if (!voFailed(code)) *this = std::move(next);
  return VO_LOGGED("", code);
}

VoErrorCode VoMsgMapiData::_withStringData(const char* text, VoMsgMapiData& next) const {
  if (!text) return kVoBadArgument;
  const unsigned base = mapiBaseType(mMapiType);
  if (base != kPtString8 && base != kPtUnicode) return kVoNotSupported;
  return guarded([&]() -> VoErrorCode {
    std::string bytes = base == kPtUnicode ? utf16FromUtf8(text) : std::string(text);
    bytes.append(base == kPtUnicode ? 2 : 1, '\0');
    if (bytes.size() > kMostTnefBytes) return kVoNoMemory;
    char* const block = next.takeBlock(static_cast<std::uint32_t>(bytes.size()));
    if (!block) return kVoNoMemory;
    std::memcpy(block, bytes.data(), bytes.size());
    next.mHasTnefMessage = mHasTnefMessage;
    next.mOffset = mOffset;
    next.mSourceSize = mSourceSize;
    return kVoSuccess;
  });
}

VoErrorCode VoMsgMapiData::getContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target) {
  return VO_LOGGED("", _getContent(source, target));
}

VoErrorCode VoMsgMapiData::_getContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target) {
  return guarded([&]() -> VoErrorCode {
    const MapiForm form = mapiTypeRow(mMapiType).form;
    const bool isObject = form == MapiForm::object;
    if ((!isObject && form != MapiForm::prefixed) || mMapiDataSize <= (isObject ? kInterfaceIdBytes : 0u))
      return kVoNoContent;
    const ValueContent kind = isObject                        ? ValueContent::object
                              : mMapiName == kPrRtfCompressed ? ValueContent::compressedRtf
                                                              : ValueContent::bytes;
    const bool isHere = mHolding == Holding::block || mHolding == Holding::replaced;
    const OpenReader opened(isHere ? nullptr : source);
    if (!isHere && !opened.isOpen()) return kVoReadFailed;

    std::unique_ptr<VoMsgResourceLocator> made;
    if (!target) {
      made = decodedResource(isHere ? mMapiDataSize : valueContentSize(*source, mOffset, kind));
      if (!made) return kVoWriteFailed;
    }
    const VoMsgResourceLocator& into = target ? *target : *made;
    VoErrorCode code;
    if (mHolding == Holding::block)
      code = writeBytes(into, mpBlock, mMapiDataSize);
    else if (mHolding == Holding::replaced)
      code = copyResource(*mpReplacement->content, into);
    else
      code = copyValueContent(into, *source, mOffset, kind);
    if (!voFailed(code) && made) target = made.release();
    return code;
  });
}

VoErrorCode VoMsgMapiData::_setContent(std::unique_ptr<VoMsgResourceLocator> content, VoMsgBufferedReader* source) {
  VoMsgMapiData next(mMapiType, mMapiName, true);
  const VoErrorCode code = _withContent(content, source, next);
  if (!voFailed(code)) *this = std::move(next);
  return code;
}

VoErrorCode VoMsgMapiData::_withContent(std::unique_ptr<VoMsgResourceLocator>& content, VoMsgBufferedReader* source,
                                        VoMsgMapiData& next) const {
  if (!content) return kVoBadArgument;
  const bool isObject = mapiTypeRow(mMapiType).form == MapiForm::object;
  if (!isObject && mapiBaseType(mMapiType) != kPtBinary) return kVoNotSupported;
  return guarded([&]() -> VoErrorCode {
    const std::uint64_t length =
        std::uint64_t{content->getSize(VoMsgResourceLocator::dataPart)} + (isObject ? kInterfaceIdBytes : 0);
    if (length > kMostTnefBytes) return kVoNoMemory;
    auto replacement = std::make_unique<Replacement>();
    if (mHolding == Holding::replaced) {
      std::memcpy(replacement->interfaceId, mpReplacement->interfaceId, kInterfaceIdBytes);
    } else if (isObject) {
      if (!source || !moveTo(*source, std::uint64_t{mOffset} + 4) ||
          source->read(replacement->interfaceId, kInterfaceIdBytes) < kInterfaceIdBytes)
        return kVoReadFailed;
    }
    replacement->content = std::move(content);
    next.mMapiType = mMapiType;
    next.mMapiName = mMapiName;
    next.mHasTnefMessage = mHasTnefMessage;
    next.mOffset = mOffset;
    next.mSourceSize = mSourceSize;
    next.mpReplacement = replacement.release();
    next.mHolding = Holding::replaced;
    next.mMapiDataSize = static_cast<std::uint32_t>(length);
    next.mMapiPaddingSize = mapiPadding(next.mMapiDataSize);
    return kVoSuccess;
  });
}

VoErrorCode VoMsgMapiData::_copyBodyFromSource(const VoMsgResourceLocator* target, VoMsgBufferedReader* source,
                                               unsigned int length) {
  if (!target || !source) return kVoWriteFailed;
  return guarded([&] { return copyStretch(*target, *source, source->getOffset(), length); });
}

bool VoMsgMapiData::_seekSet(VoMsgBufferedReader* source) const { return source && moveTo(*source, mOffset); }

std::uint32_t VoMsgMapiData::_getSize() const {
  const bool isPrefixed = mapiTypeRow(mMapiType).form != MapiForm::fixed;
  return mMapiDataSize + mMapiPaddingSize + (isPrefixed ? 4 : 0);
}

VoErrorCode VoMsgMapiData::writeMapiData(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source,
                                         unsigned short& checkSum) {
  return VO_LOGGED("", _write(writer, source, checkSum));
}

VoErrorCode VoMsgMapiData::_write(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source, unsigned short& checkSum) {
  if (!writer) return kVoWriteFailed;
  // A number that the end cut short is written in full, or what follows it in the list would be taken for its rest.
  const bool isWhole = mSourceSize == _getSize();
  return isWhole && !mIsModified ? _writeFromSource(writer, source, checkSum) : _writeNewData(writer, checkSum);
}

VoErrorCode VoMsgMapiData::_writeData(VoMsgBufferedWriter* writer, const char* data, unsigned int length,
                                      unsigned short& checkSum) {
  if (length == 0) return kVoSuccess;
  if (!writer->write(data, length)) return kVoWriteFailed;
  addCheckSum(checkSum, data, length);
  return kVoSuccess;
}

VoErrorCode VoMsgMapiData::_writeNewData(VoMsgBufferedWriter* writer, unsigned short& checkSum) {
  constexpr char kPadding[4] = {};
  if (mapiTypeRow(mMapiType).form != MapiForm::fixed) _tnefSetInt32(writer, mMapiDataSize, checkSum);
  VoErrorCode code = kVoSuccess;
  if (mHolding == Holding::replaced) {
    const bool isObject = mapiTypeRow(mMapiType).form == MapiForm::object;
    if (isObject) code = _writeData(writer, mpReplacement->interfaceId, kInterfaceIdBytes, checkSum);
    const std::unique_ptr<VoMsgBufferedReader> content(
        mpReplacement->content->getInputStream(VoMsgResourceLocator::dataPart));
    if (!content || !content->open()) return kVoWriteFailed;
    std::uint32_t left = mMapiDataSize - (isObject ? kInterfaceIdBytes : 0);
    char piece[4096];
    while (!voFailed(code) && left > 0) {
      const unsigned n = content->read(piece, left < sizeof piece ? left : sizeof piece);
      if (n == 0) return kVoWriteFailed;
      code = _writeData(writer, piece, n, checkSum);
      left -= n;
    }
  } else if (const char* const data = getData()) {
    code = _writeData(writer, data, mMapiDataSize, checkSum);
  }
  return voFailed(code) ? code : _writeData(writer, kPadding, mMapiPaddingSize, checkSum);
}

VoErrorCode VoMsgMapiData::_writeFromSource(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source,
                                            unsigned short& checkSum) {
  if (!source || !_seekSet(source)) return kVoWriteFailed;
  char piece[4096];
  for (std::uint32_t left = mSourceSize; left > 0;) {
    const unsigned n = source->read(piece, left < sizeof piece ? left : sizeof piece);
    if (n == 0) return kVoWriteFailed;
    const VoErrorCode code = _writeData(writer, piece, n, checkSum);
    if (voFailed(code)) return code;
    left -= n;
  }
  return kVoSuccess;
}

bool VoMsgMapiData::copy(const VoMsgMapiData& from) {
  return guardedOr(false, [&] {
    release();
    mMapiType = from.mMapiType;
    mMapiName = from.mMapiName;
    mIsModified = from.mIsModified;
    mHasTnefMessage = from.mHasTnefMessage;
    mOffset = from.mOffset;
    mSourceSize = from.mSourceSize;
    mMapiDataSize = from.mMapiDataSize;
    mMapiPaddingSize = from.mMapiPaddingSize;
    if (from.mHolding == Holding::inlined) {
      std::memcpy(mInline, from.mInline, sizeof mInline);
      mHolding = Holding::inlined;
    } else if (from.mHolding == Holding::block) {
      char* const block = takeBlock(from.mMapiDataSize);
      if (!block) return false;
      std::memcpy(block, from.mpBlock, from.mMapiDataSize);
    } else if (from.mHolding == Holding::replaced) {
      auto replacement = std::make_unique<Replacement>();
      std::memcpy(replacement->interfaceId, from.mpReplacement->interfaceId, kInterfaceIdBytes);
      replacement->content = copyOfResource(*from.mpReplacement->content);
      if (!replacement->content) return false;
      mpReplacement = replacement.release();
      mHolding = Holding::replaced;
    }
    return true;
  });
}

void VoMsgMapiData::dumpMapiData(std::FILE* out) const {
  if (!out) return;
  std::fprintf(out, "        mOffset           : D'%u\n", mOffset);
  std::fprintf(out, "        mMapiDataSize     : D'%u\n", mMapiDataSize);
  std::fprintf(out, "        mMapiPaddingSize  : D'%u\n", unsigned{mMapiPaddingSize});
  if (const char* const data = getData()) dumpMemoryHex(out, data, mMapiDataSize);
}
