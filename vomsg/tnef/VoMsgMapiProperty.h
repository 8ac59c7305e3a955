// One property of a MAPI property list: type, id, for ids of 0x8000 and above a property set with a name or number,
// and its values.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "vomsg/tnef/VoMsgMapiData.h"

namespace vomsg::detail {
class MapiChildren;
class MapiListWalk;
struct MapiPropertyHead;
}  // namespace vomsg::detail

class VOMSG_API VoMsgMapiProperty {
 public:
  VoMsgMapiProperty();
  VoMsgMapiProperty(VoMsgMapiProperty&& other) noexcept;
  VoMsgMapiProperty& operator=(VoMsgMapiProperty&& other) noexcept;
  virtual ~VoMsgMapiProperty();

  // Reads the property at the source's position. Returns the last child entity that a value became, or null; children
  // and codes as VoMsgMapiData::readMapiData. What was read before a failure stays.
  VoMsgTnefEntity* readMapiProperty(int& result, VoMsgTnefEntity* messageEntity, VoMsgBufferedReader* source);
  // Writes the property as it stands and adds its bytes to `checkSum`. kVoWriteFailed.
  VoErrorCode writeMapiProperty(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source, unsigned short& checkSum);

  // The first value as UTF-8, up to its first NUL; borrowed until it changes. Null for a property that is no text.
  const char* getStringData() const;
  // Replaces the first value; codes as VoMsgMapiData::setStringData. kVoNoContent: there is no value.
  VoErrorCode setStringData(const char* text);
  // The first value's content, as VoMsgMapiData::getContent.
  VoErrorCode getRawContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target);

  unsigned short getMapiPropertyName() const { return mMapiName; }  // the id
  unsigned short getMapiType() const { return mMapiType; }
  std::uint32_t countMapiData() const { return static_cast<std::uint32_t>(mMapiDataList.size()); }
  VoMsgMapiData* getMapiDataAt(std::uint32_t i);  // borrowed; null when there is none
  // Of a named property: its 16-byte property set, its kind (1: a name), its number, its name in UTF-16LE.
  const char* getPropertySet() const;  // borrowed; null when it is not named
  std::uint32_t getNameKind() const;
  std::uint32_t getNameNumber() const;
  std::string getNameText() const;

  bool isModified() const;
  bool hasContent() const;  // this is the data of an attachment (0x3701)
  bool hasAttachedTnefMessage() const;
  bool _isMultipleValue() const;  // the type is followed by a count
  bool _isUserDefinedNameToID() const;
  std::uint64_t _getSize() const;  // bytes that writeMapiProperty writes

  // A copy of everything; false when memory runs out.
  bool copy(const VoMsgMapiProperty& from);
  void dumpMapiProperty(std::FILE* out) const;

  // The same operations without a log line.
  VoErrorCode _write(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source, unsigned short& checkSum);
  VoErrorCode _getRawContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target);

  // The value that lies at `offset` of the source, or null.
  VoMsgMapiData* _findValue(std::uint32_t offset);
  bool _removeValue(std::uint32_t offset);
  // Takes the property that `walk` stands at, with its values, and makes `children` of them, unless that is null.
  VoErrorCode _readProperty(vomsg::detail::TnefCursor& cursor, vomsg::detail::MapiListWalk& walk,
                            vomsg::detail::MapiChildren* children);

 private:
  struct NamedPart {
    char propertySet[16];
    std::uint32_t kind;
    std::uint32_t number;  // of a property without a name
    std::string name;
  };

  void takeHead(vomsg::detail::TnefCursor& cursor, const vomsg::detail::MapiPropertyHead& head);

  std::uint16_t mMapiType = 0;
  std::uint16_t mMapiName = 0;
  bool mHasLostValues = false;  // a value was removed
  std::unique_ptr<NamedPart> mpNamedPart;
  std::vector<VoMsgMapiData> mMapiDataList;
  mutable std::unique_ptr<std::string> mpText;  // what getStringData handed out
};
