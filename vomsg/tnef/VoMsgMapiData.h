// One value of a MAPI property. Values are kept by value in their property's list, and there may be millions: a small
// value lies in the object itself, an empty one has no block, and what became a child entity is not held at all.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VoMsgBufferedReader;
class VoMsgBufferedWriter;
class VoMsgResourceLocator;
class VoMsgTnefEntity;
namespace vomsg::detail {
class MapiChildren;
class TnefCursor;
struct MapiValueHead;
}  // namespace vomsg::detail

class VOMSG_API VoMsgMapiData {
 public:
  // Type and id are those of the property.
  VoMsgMapiData(unsigned short type, unsigned short id, bool isModified);
  VoMsgMapiData(VoMsgMapiData&& other) noexcept;
  VoMsgMapiData& operator=(VoMsgMapiData&& other) noexcept;
  virtual ~VoMsgMapiData();

  // Reads the value at the source's position. Returns the child entity that it became (the text, the formatted text
  // or a stream of its own), linked under `messageEntity`, or null; with a null `messageEntity` none is made.
  // kVoReadFailed: no source, or a length beyond the source; kVoBadFormat: it ends beyond the end; kVoTnefMalformed:
  // no such type, or an object of less than 16 bytes; kVoNoMemory; the codes of the stream inside.
  VoMsgTnefEntity* readMapiData(int& result, VoMsgTnefEntity* messageEntity, VoMsgBufferedReader* source);
  // Writes the value as it stands and adds its bytes to `checkSum`. kVoWriteFailed.
  VoErrorCode writeMapiData(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source, unsigned short& checkSum);

  // The text as UTF-8, up to its first NUL; "" for other types. Also the value of an empty text.
  std::string getStringData() const;
  // A PT_STRING8 takes the bytes, a PT_UNICODE the UTF-16 for them, each with its NUL. kVoNotSupported: other types;
  // kVoBadArgument: null; kVoNoMemory.
  VoErrorCode setStringData(const char* text);

  // The content: text and binary as stored, an object without its interface id, compressed RTF expanded. A given
  // `target` receives it; for a null one a temporary resource is made, which is then the caller's.
  // kVoNoContent: no bytes, or a value of another type; else as VoMsgTnefAttachData::getContent.
  VoErrorCode getContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target);
  // Replaces the content of a PT_BINARY or PT_OBJECT by `content`; an object keeps the
  // interface id that `source` has for it. kVoNotSupported: other types.
  VoErrorCode _setContent(std::unique_ptr<VoMsgResourceLocator> content, VoMsgBufferedReader* source);
  VoErrorCode _copyBodyFromSource(const VoMsgResourceLocator* target, VoMsgBufferedReader* source, unsigned int length);

  bool _isStringOrBinary() const;
  bool isModified() const { return mIsModified; }
  bool hasAttachedTnefMessage() const { return mHasTnefMessage; }
  std::uint32_t _getSize() const;  // bytes that writeMapiData writes
  std::uint32_t _getOffset() const { return mOffset; }
  std::uint32_t getDataSize() const { return mMapiDataSize; }
  std::uint32_t getPaddingSize() const { return mMapiPaddingSize; }
  // The bytes of a number or of a value held in memory; null for what is not held.
  const char* getData() const;
  bool _seekSet(VoMsgBufferedReader* source) const;  // moves to the value

  VoErrorCode _writeData(VoMsgBufferedWriter* writer, const char* data, unsigned int length, unsigned short& checkSum);
  VoErrorCode _writeNewData(VoMsgBufferedWriter* writer, unsigned short& checkSum);
  VoErrorCode _writeFromSource(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source, unsigned short& checkSum);

  // A copy of everything; false when memory runs out.
  bool copy(const VoMsgMapiData& from);
  void dumpMapiData(std::FILE* out) const;

  // Takes the value that `head` describes; the cursor stands at its first byte. What becomes an entity is not held, and
  // its entity is made by `children`, unless that is null.
  VoErrorCode _readValue(vomsg::detail::TnefCursor& cursor, const vomsg::detail::MapiValueHead& head,
                         vomsg::detail::MapiChildren* children);
  // The same operations without a log line.
  VoErrorCode _write(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source, unsigned short& checkSum);
  VoErrorCode _getContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target);
  // Makes `next` this value with another text, to be moved here when nothing else can fail; as setStringData.
  VoErrorCode _withStringData(const char* text, VoMsgMapiData& next) const;
  // The same with other content, which is taken over on success; as _setContent.
  VoErrorCode _withContent(std::unique_ptr<VoMsgResourceLocator>& content, VoMsgBufferedReader* source,
                           VoMsgMapiData& next) const;

 private:
  enum class Holding : std::uint8_t {
    nothing,   // no bytes, or they are in the source
    inlined,   // in mInline
    block,     // in mpBlock, from malloc, 16 bytes longer than the data
    replaced,  // in mpReplacement
  };
  struct Replacement;

  void release();
  char* takeBlock(std::uint32_t length);  // null when memory runs out

  std::uint16_t mMapiType;
  std::uint16_t mMapiName;
  std::uint8_t mMapiPaddingSize = 0;
  Holding mHolding = Holding::nothing;
  bool mIsModified;
  bool mHasTnefMessage = false;
  std::uint32_t mOffset = 0;        // in the source, of the length field or the number
  std::uint32_t mSourceSize = 0;    // of all that in the source
  std::uint32_t mMapiDataSize = 0;  // bytes of data
  union {
    char mInline[16];
    char* mpBlock;
    Replacement* mpReplacement;
  };
};
