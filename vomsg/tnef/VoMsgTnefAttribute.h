// One record of a TNEF stream, with its data in memory. A record is
//   level (1 byte), name id (2), type id (2), data length (4), data, sum of the data bytes (2)
// with all integers little-endian. A record that was read and not changed is written back as the bytes it had,
// whatever its checksum.
#pragma once

#include <cstdint>
#include <cstdio>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgTnefEntity;
namespace vomsg::detail {
class TnefCursor;
}

class VOMSG_API VoMsgTnefAttribute {
 public:
  VoMsgTnefAttribute(unsigned char level, unsigned short typeId, unsigned short nameId);
  VoMsgTnefAttribute(const VoMsgTnefAttribute&) = delete;
  VoMsgTnefAttribute& operator=(const VoMsgTnefAttribute&) = delete;
  virtual ~VoMsgTnefAttribute();

  // A copy, yours, which may outlive this record; `entity` will own it. Null when memory runs out.
  virtual VoMsgTnefAttribute* copy(VoMsgTnefEntity* entity);
  // Reads the record; `source` stands behind its first five bytes, level and ids. Returns the child entity that the
  // record starts, or null; `messageEntity` becomes its parent, and with a null one no child is made.
  // kVoReadFailed: no source, or a length beyond the source; kVoNoMemory; the codes of nested reads.
  virtual VoMsgTnefEntity* readData(int& result, VoMsgTnefEntity* messageEntity, VoMsgBufferedReader* source);
  // The record as it stands: new data, or the bytes of `source`. kVoWriteFailed: refused, or no source to copy from.
  virtual VoErrorCode writeData(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source);
  virtual void dumpTnefAttribute(std::FILE* out);
  virtual bool _isModified();
  // Copies the record's bytes. Success, with nothing written, for a null source.
  virtual VoErrorCode _writeFromSource(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source);
  virtual VoErrorCode _writeNewData(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source);
  // Replaces the data by a copy of `data`. When memory runs out the record has no data any more and counts as
  // modified all the same.
  virtual void setData(const char* data, unsigned int size);
  // The reading behind readData, for a record that begins at `offset`; the cursor stands behind its ids.
  virtual VoErrorCode _readRecord(vomsg::detail::TnefCursor& cursor, std::uint32_t offset);

  unsigned short getTnefNameID() const { return mNameID; }
  unsigned short getTnefTypeID() const { return mTypeID; }
  unsigned char getTnefLevel() const { return mLvlType; }
  const char* getData() const { return mpData.get(); }  // borrowed; null for empty and for by-reference records
  unsigned int getDataSize() const { return mLen; }
  unsigned short getCheckSum() const { return mCheckSum; }
  int getOffset() const { return mOffset; }  // of the level byte in the source; 0 for set data
  int getSize() const { return mSize; }      // of the whole record in the source; mLen + 11 for set data

  // Compares the sum of the next `length` bytes with the checksum behind them, and moves back. Nothing in the library
  // asks: streams with wrong sums are common and open like any other.
  bool _verifyCheckSum(VoMsgBufferedReader* source, unsigned int length);

  // writeData for a record that another one follows: what the end of the stream cut off is written too, as the zeros
  // that reading takes it for. Else the next record would be taken for it.
  virtual VoErrorCode _writeWhole(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source);
  // writeData without a log line.
  VoErrorCode _writeAsIs(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source);
  // Takes `data` over, which has `size` bytes and a NUL behind them, as new data. Cannot fail.
  void _takeData(vomsg::detail::CString data, unsigned int size);
  // The parse ended inside this record: it can be looked at, but its bytes belong to the unreadable tail of the
  // stream, so it is never written by itself.
  bool _isBroken() const { return mIsBroken; }
  void _setBroken() {
    mIsBroken = true;
    mSize = 0;
  }

 protected:
  void dumpTnefAttributeData(std::FILE* out);
  // Moves the source forward to the record; false when it cannot get there.
  bool _seekSet(VoMsgBufferedReader* source) const;
  void writeHead(VoMsgBufferedWriter* writer, std::uint32_t length) const;
  void takeHead(const VoMsgTnefAttribute& from);  // everything but the data

  bool mIsModified = false;
  bool mIsBroken = false;
  std::uint8_t mLvlType;
  std::uint16_t mTypeID;
  std::uint16_t mNameID;
  std::uint16_t mCheckSum = 0;
  std::int32_t mOffset = 0;
  std::int32_t mSize = 0;
  std::uint32_t mLen = 0;
  std::uint32_t mMissing = 0;  // bytes that the end of the source cut off
  vomsg::detail::CString mpData;
};

namespace vomsg::detail {

// Calls `_readRecord` as the public readData operations do: from the reader's position, which ends behind the record.
// The result is a VoErrorCode.
int readRecordFrom(VoMsgTnefAttribute& record, VoMsgBufferedReader* source);

}  // namespace vomsg::detail
