#include "vomsg/tnef/VoMsgTnefAttribute.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgDump.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/tnef/VoMsgTnefCursor.h"
#include "vomsg/tnef/VoMsgTnefEntity.h"
#include "vomsg/tnef/VoTnefInteger.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgTnefAttribute";

const char* modifiedText(unsigned value) { return value == 1 ? "true" : value == 0 ? "false" : "----"; }

}  // namespace

VoMsgTnefAttribute::VoMsgTnefAttribute(unsigned char level, unsigned short typeId, unsigned short nameId)
    : mLvlType(level), mTypeID(typeId), mNameID(nameId) {}

VoMsgTnefAttribute::~VoMsgTnefAttribute() = default;

void VoMsgTnefAttribute::takeHead(const VoMsgTnefAttribute& from) {
  mIsModified = from.mIsModified;
  mIsBroken = from.mIsBroken;
  mOffset = from.mOffset;
  mSize = from.mSize;
  mLen = from.mLen;
  mMissing = from.mMissing;
  mCheckSum = from.mCheckSum;
}

VoMsgTnefAttribute* VoMsgTnefAttribute::copy(VoMsgTnefEntity*) {
  auto* const copied = guardedOr<VoMsgTnefAttribute*>(nullptr, [&]() -> VoMsgTnefAttribute* {
    auto other = std::make_unique<VoMsgTnefAttribute>(mLvlType, mTypeID, mNameID);
    other->takeHead(*this);
    if (mpData) {
      other->mpData = copyCString({mpData.get(), mLen});
      if (!other->mpData) return nullptr;
    }
    return other.release();
  });
  if (!copied) VO_LOGGED("", kVoNoMemory);
  return copied;
}

int vomsg::detail::readRecordFrom(VoMsgTnefAttribute& record, VoMsgBufferedReader* source) {
  if (!source) return static_cast<int>(kVoReadFailed);
  TnefCursor cursor(*source);
  if (!cursor.isReadable()) return static_cast<int>(kVoReadFailed);
  const std::uint32_t position = cursor.position();
  const VoErrorCode code =
      guarded([&] { return record._readRecord(cursor, position - std::min(position, kTnefIdBytes)); });
  cursor.settle();
  return static_cast<int>(code);
}

// The only id whose in-memory form starts an entity; streams give it to the by-reference class instead.
VoMsgTnefEntity* VoMsgTnefAttribute::readData(int& result, VoMsgTnefEntity* messageEntity,
                                              VoMsgBufferedReader* source) {
  result = readRecordFrom(*this, source);
  VO_LOGGED(messageEntity ? messageEntity->_getUUIDString() : "", static_cast<VoErrorCode>(result));
  if (voFailed(result) || mNameID != kAttAttachRendData) return nullptr;
  return VoMsgTnefEntity::_createChild(result, messageEntity, VoMsgTnefEntity::kInMemoryRecord);
}

// A length beyond what is left, but not beyond the whole source, is taken at its word: the missing bytes are zero.
VoErrorCode VoMsgTnefAttribute::_readRecord(TnefCursor& cursor, std::uint32_t offset) {
  mOffset = static_cast<std::int32_t>(offset);
  mLen = cursor.readInt32();
  if (mLen > cursor.size()) return kVoReadFailed;
  mpData.reset();
  if (mLen > 0) {
    mpData.reset(static_cast<char*>(std::malloc(std::size_t{mLen} + 1)));
    if (!mpData) return noteShortage(kVoNoMemory);
    cursor.read(mpData.get(), mLen);
    mpData.get()[mLen] = '\0';
  }
  mCheckSum = cursor.readInt16();
  mSize = static_cast<std::int32_t>(cursor.position() - offset);
  mMissing = cursor.missing();
  return kVoSuccess;
}

VoErrorCode VoMsgTnefAttribute::writeData(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) {
  return VO_LOGGED("", _writeAsIs(writer, source));
}

VoErrorCode VoMsgTnefAttribute::_writeAsIs(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) {
  if (_isModified() && !mIsBroken) return _writeNewData(writer, source);
  return source ? _writeFromSource(writer, source) : kVoWriteFailed;
}

bool VoMsgTnefAttribute::_isModified() { return mIsModified; }

bool VoMsgTnefAttribute::_seekSet(VoMsgBufferedReader* source) const {
  return moveTo(*source, static_cast<std::uint32_t>(mOffset));
}

VoErrorCode VoMsgTnefAttribute::_writeFromSource(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) {
  if (!source) return kVoSuccess;
  if (!writer) return kVoWriteFailed;
  const VoErrorCode code =
      copyRange(*source, *writer, static_cast<std::uint32_t>(mOffset), static_cast<std::uint32_t>(mSize));
  return voFailed(code) ? kVoWriteFailed : kVoSuccess;
}

VoErrorCode VoMsgTnefAttribute::_writeWhole(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) {
  const VoErrorCode code = _writeAsIs(writer, source);
  constexpr char kZeros[256] = {};
  for (std::uint32_t left = voFailed(code) || mIsBroken || _isModified() ? 0 : mMissing; left > 0;) {
    const std::uint32_t n = std::min<std::uint32_t>(left, sizeof kZeros);
    if (!writer->write(kZeros, n)) return kVoWriteFailed;
    left -= n;
  }
  return code;
}

void VoMsgTnefAttribute::writeHead(VoMsgBufferedWriter* writer, std::uint32_t length) const {
  const char level = static_cast<char>(mLvlType);
  writer->write(&level, 1);
  _tnefSetInt16(writer, mNameID);
  _tnefSetInt16(writer, mTypeID);
  _tnefSetInt32(writer, length);
}

// Where setData ran out of memory there is a length and no data; the length written is that of what follows.
VoErrorCode VoMsgTnefAttribute::_writeNewData(VoMsgBufferedWriter* writer, VoMsgBufferedReader*) {
  if (!writer) return kVoWriteFailed;
  const std::uint32_t length = mpData ? mLen : 0;
  writeHead(writer, length);
  if (!writer->write(mpData.get(), length)) return kVoWriteFailed;
  mCheckSum = _tnefCalcCheckSum(mpData.get(), length);
  _tnefSetInt16(writer, mCheckSum);
  return kVoSuccess;
}

void VoMsgTnefAttribute::setData(const char* data, unsigned int size) {
  CString block;
  if (data && size > 0) {
    block = copyCString({data, size});
    if (!block) {
      mIsModified = true;
      mpData.reset();
      VO_LOGGED("", kVoNoMemory);
      return;
    }
  }
  _takeData(std::move(block), size);
}

void VoMsgTnefAttribute::_takeData(CString data, unsigned int size) {
  mIsModified = true;
  mpData = std::move(data);
  mLen = mpData ? size : 0;
  mCheckSum = _tnefCalcCheckSum(mpData.get(), mLen);
  mOffset = 0;
  mSize = static_cast<std::int32_t>(mLen + kTnefRecordOverhead);
}

bool VoMsgTnefAttribute::_verifyCheckSum(VoMsgBufferedReader* source, unsigned int length) {
  if (!source) return false;
  const std::uint32_t start = source->getOffset();
  char piece[1024];
  unsigned sum = 0;
  while (length > 0) {
    const unsigned n = source->read(piece, std::min<unsigned>(length, sizeof piece));
    if (n == 0) break;
    sum += _tnefCalcCheckSum(piece, n);
    length -= n;
  }
  const bool same = length == 0 && _tnefGetInt16(source) == static_cast<unsigned short>(sum);
  moveTo(*source, start);
  return same;
}

void VoMsgTnefAttribute::dumpTnefAttribute(std::FILE* out) {
  if (!out) return;
  std::fprintf(out, "\n%s( VoMsgTnefAttribute )\n", "    ");
  dumpTnefAttributeData(out);
}

void VoMsgTnefAttribute::dumpTnefAttributeData(std::FILE* out) {
  std::fprintf(out, "    mIsModified       : %s\n", modifiedText(mIsModified));
  std::fprintf(out, "    mOffset           : D'%d\n", mOffset);
  std::fprintf(out, "    mSize             : D'%d\n", mSize);
  std::fprintf(out, "    mLvlType          : H'%.2x\n", unsigned{mLvlType});
  std::fprintf(out, "    mTypeID           : H'%.4x\n", unsigned{mTypeID});
  std::fprintf(out, "    mNameID           : H'%.4x\n", unsigned{mNameID});
  std::fprintf(out, "    mLen              : D'%u\n", mLen);
  std::fprintf(out, "    mpData            : H'%.8x\n",
               static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(mpData.get())));
  if (mpData) dumpMemoryHex(out, mpData.get(), mLen);
  std::fprintf(out, "    mCheckSum         : H'%.4x\n", unsigned{mCheckSum});
}
