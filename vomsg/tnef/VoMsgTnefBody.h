// The records of one entity of a TNEF tree, in stream order, and what was fetched of its content.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "vomsg/foundation/VoMsgMultiString.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/tnef/VoMsgTnefAttribute.h"

class VoMsgMapiAttachment;
class VoMsgTnefAttachData;

class VOMSG_API VoMsgTnefBody {
 public:
  VoMsgTnefBody();
  VoMsgTnefBody(const VoMsgTnefBody&) = delete;
  VoMsgTnefBody& operator=(const VoMsgTnefBody&) = delete;
  ~VoMsgTnefBody();

  // Takes the record over. It goes before one that the parse ended in, whose bytes are the end of the stream whatever
  // else is written. kVoBadArgument: null; kVoNoMemory: it is gone.
  VoErrorCode appendAttribute(VoMsgTnefAttribute* attribute);
  std::size_t countAttributes() const { return mAttributes.size(); }
  VoMsgTnefAttribute* getAttributeAt(std::size_t i);  // borrowed; null when there is none
  // The first record with that name id; borrowed, or null.
  VoMsgTnefAttribute* getTnefObjectByNameID(unsigned short nameId);
  // Writes every record as it stands. kVoWriteFailed.
  VoErrorCode writeBodyPart(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source);
  VoErrorCode _writeRecords(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source);  // leaves no log line
  // The content that the records hold: attAttachData, else attBody, else property 0x3701. A given `target` receives
  // it; a null one becomes the body's own resource, borrowed. kVoNoContent: there is none; else as
  // VoMsgTnefAttachData::getContent.
  VoErrorCode getRawContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target);
  // A copy of all records, yours; null when memory runs out.
  VoMsgTnefBody* copy(VoMsgTnefEntity* entity);
  void dumpTnefBody(std::FILE* out);

  VoErrorCode _getRawContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target);  // leaves no log line
  // Makes room for so many records more, which appendAttribute() then takes without failing.
  void _reserve(std::size_t more) { mAttributes.reserve(mAttributes.size() + more); }
  bool _isModified() const;  // one of the records is
  std::uint32_t _getContentSize();
  bool _isContentBroken();                // the parse ended inside the record or list that holds the content
  VoMsgMapiAttachment* _getAttachment();  // the attAttachment list, or null
  VoMsgTnefAttachData* _getDataRecord();  // attAttachData, else attBody, or null
  VoMsgMapiAttachment* _findList(std::uint32_t offset);  // the list that holds that offset of the source, or null
  void _moveAttributesTo(VoMsgTnefBody& other);          // behind the other's own
  void _setContent(std::unique_ptr<VoMsgResourceLocator> content) { mContent = std::move(content); }
  const VoMsgResourceLocator* _content() const { return mContent.get(); }
  // The file name that the last query gave out.
  std::unique_ptr<VoMsgMultiString>& _fileName() { return mpFileName; }

 private:
  std::vector<std::unique_ptr<VoMsgTnefAttribute>> mAttributes;
  std::unique_ptr<VoMsgResourceLocator> mContent;  // of a value; records keep their own
  std::unique_ptr<VoMsgMultiString> mpFileName;
};
