// A record whose data stays in the source stream until somebody asks for it: attachments, bodies, and whatever the
// library has no name for.
#pragma once

#include <memory>

#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/tnef/VoMsgTnefAttribute.h"

class VOMSG_API VoMsgTnefAttachData : public VoMsgTnefAttribute {
 public:
  VoMsgTnefAttachData(unsigned char level, unsigned short typeId, unsigned short nameId);
  ~VoMsgTnefAttachData() override;

  VoMsgTnefAttribute* copy(VoMsgTnefEntity* entity) override;
  VoMsgTnefEntity* readData(int& result, VoMsgTnefEntity* messageEntity, VoMsgBufferedReader* source) override;
  void dumpTnefAttribute(std::FILE* out) override;
  VoErrorCode _writeNewData(VoMsgBufferedWriter* writer, VoMsgBufferedReader* source) override;
  void setData(const char* data, unsigned int size) override;
  VoErrorCode _readRecord(vomsg::detail::TnefCursor& cursor, std::uint32_t offset) override;

  // Moves the source forward to the first data byte. False when it cannot get there.
  bool seekSourceToBodyPart(VoMsgBufferedReader* source);
  // The data. A given `target` receives a copy; a null one becomes the record's own resource, borrowed, which is
  // fetched from `source` once. `source` may be closed; it is closed again then.
  // kVoNoContent: the record has no data; kVoReadFailed: no source; kVoTnefMalformed: the source ends early;
  // kVoWriteFailed: the target refused.
  VoErrorCode getContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target);
  // Takes the resource over as the new data. kVoBadArgument: null.
  VoErrorCode setContent(VoMsgResourceLocator*& resource);
  // The same with a sum known before. Cannot fail.
  void _takeContent(std::unique_ptr<VoMsgResourceLocator> content, unsigned short checkSum);
  VoErrorCode _getContent(VoMsgBufferedReader* source, const VoMsgResourceLocator*& target);  // leaves no log line
  // Copies the next `length` bytes of `source`; codes as getContent.
  VoErrorCode _copyBodyFromSource(const VoMsgResourceLocator* target, VoMsgBufferedReader* source, unsigned int length);
  // Whether the data is a TNEF stream. The source moves forward to behind the signature, or to the end of the record.
  bool hasTnefMessage(VoMsgBufferedReader* source);

 private:
  std::unique_ptr<VoMsgResourceLocator> contentResource;
};
