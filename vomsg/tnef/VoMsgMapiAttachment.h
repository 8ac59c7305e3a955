// A record whose data is a MAPI property list: attMsgProps and attAttachment.
#pragma once

#include <cstdint>
#include <vector>

#include "vomsg/tnef/VoMsgMapiProperty.h"
#include "vomsg/tnef/VoMsgTnefAttribute.h"

class VOMSG_API VoMsgMapiAttachment : public VoMsgTnefAttribute {
 public:
  VoMsgMapiAttachment(unsigned char level, unsigned short typeId, unsigned short nameId);
  ~VoMsgMapiAttachment() override;

  VoMsgTnefAttribute* copy(VoMsgTnefEntity* entity) override;
  // Returns the last child entity that a value became; all of them are linked under `messageEntity` in stream order.
  // What was read before a failure stays in the list.
  VoMsgTnefEntity* readData(int& result, VoMsgTnefEntity* messageEntity, VoMsgBufferedReader* source) override;
  void dumpTnefAttribute(std::FILE* out) override;
  bool _isModified() override;
  VoErrorCode _writeNewData(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) override;
  void setData(const char* data, unsigned int size) override;  // nothing: the list is edited by its properties
  VoErrorCode _writeWhole(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) override;
  VoErrorCode _readRecord(vomsg::detail::TnefCursor& cursor, std::uint32_t offset) override;

  std::uint32_t countProperties() const { return static_cast<std::uint32_t>(mpMapiPropertyList.size()); }
  VoMsgMapiProperty* getMapiPropertyAt(std::uint32_t i);        // borrowed; null when there is none
  VoMsgMapiProperty* getMapiPropertyByName(unsigned short id);  // the first with that id; borrowed, or null
  // The property that the file name comes from, the first that is not empty of the long and the short one; or null.
  VoMsgMapiProperty* _getFileNameProperty();
  const char* getFileName();       // UTF-8 or as stored, by getMapiTypeID(); borrowed, null when there is none
  const char* getContentType();    // borrowed; null when there is none
  unsigned short getMapiTypeID();  // type of the file name's property; 0 without one
  bool hasContent();               // the list holds the data of the attachment
  bool hasAttachedTnefMessage();
  std::uint64_t _getDataSize() const;  // of all properties, without their number

  // The value that lies at `offset` of the source, or null.
  VoMsgMapiData* _findValue(std::uint32_t offset);
  // Takes the value out of the list, and its property with the last one. False when there is none.
  bool _removeValue(std::uint32_t offset);

 private:
  VoErrorCode readList(vomsg::detail::TnefCursor& cursor, std::uint32_t offset, vomsg::detail::MapiChildren* children);

  std::uint32_t mNumOfProperties = 0;
  std::vector<VoMsgMapiProperty> mpMapiPropertyList;
};
