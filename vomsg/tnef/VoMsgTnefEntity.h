// What a TNEF stream is made of, as entities: the text, the formatted text, each attachment, each stream inside. An
// entity knows which records of the stream are its own and reads them when somebody asks; until then it is a few
// dozen bytes, because a stream of eleven-byte records can start a million of them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "vomsg/entity/VoMsgHeaderlessEntity.h"
#include "vomsg/foundation/VoObjectStub.h"

class VoMsgTnefBody;
class VoMsgTnefMessage;
namespace vomsg::detail {
class MessageSource;
class NestedStreams;
class TnefParser;
enum class ValueContent : std::uint8_t;
struct MapiValueHead;
}  // namespace vomsg::detail

class VOMSG_API VoMsgTnefEntity : public VoMsgHeaderlessEntity {
 public:
  enum TnefEntityType : std::uint8_t {
    kInMemoryRecord = 0,  // attAttachRendData read in memory; no stream makes one
    kText = 1,            // a PR_BODY value
    kRichText = 2,        // a PR_RTF_COMPRESSED value
    kRecord = 3,          // an attAttachRendData or an attBody record
    kStream = 4,          // an object value that holds a stream of its own
    kMessage = 5          // the message itself
  };

  explicit VoMsgTnefEntity(TnefEntityType type);
  ~VoMsgTnefEntity() override;
  std::uint32_t getEntityTypeID() const override;
  TnefEntityType getTnefEntityType() const { return static_cast<TnefEntityType>(mType); }

  // Takes the child out of the tree; writing leaves its records out. A child that came from a property value takes
  // that value with it and leaves the records to its neighbour. A stream inside its own entity stays as bytes.
  // kVoOutOfRange: no such child; kVoReadFailed, kVoTnefMalformed: its records cannot be had, nothing changed.
  VoErrorCode removeChildEntityAt(unsigned i) override;

  // From the attachment's properties, else by the entity's type.
  const char* getContentType() const override;
  // By the code page of the entity's own attOemCodepage, else of its message's: "us-ascii" for one without a name,
  // null without a record.
  const char* getCharset() const override;
  const char* getEncoding() const override;
  // The long or short name among the attachment's properties, else attAttachTitle; null when there is none.
  const char* getFileName(const char* charset) const override;
  unsigned getContentSize() const override;
  // The name as the stream has it: UTF-8 where it was UTF-16, else the bytes; null when there is none.
  const char* _getRawFileName() const;

  // The content as stored, but compressed RTF expanded, from each of the three. kVoNoContent: none, or the entity has
  // children; kVoReadFailed; kVoTnefMalformed: the stream ends early; kVoWriteFailed.
  const VoMsgResourceLocator* getContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* getTextContent(int& err, const VoMsgResourceLocator* target,
                                             const char* charset) override;
  const VoMsgResourceLocator* getRawContent(int& err, const VoMsgResourceLocator* target) override;
  // New content for an attachment (type 3). The resource is copied; its name, when it has one, becomes the file name,
  // and `contentType` the type where the attachment has a property for it. What is equal already is not touched.
  // kVoBadArgument: null; kVoNoContent: it has children, or no records; kVoNotSupported: "quoted-printable";
  // kVoBadEncoding: texts and streams cannot be replaced; kVoTnefMalformed: the parse ended inside what would change.
  VoErrorCode setContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding) override;
  VoErrorCode setTextContent(VoMsgResourceLocator* content, const char* contentType, const char* charset) override;
  VoErrorCode setRawContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding) override;
  // The same, keeping the content type.
  VoErrorCode replaceContent(VoMsgResourceLocator* content, const char* encoding) override;
  VoErrorCode replaceTextContent(VoMsgResourceLocator* content, const char* charset,
                                 VoMsgReplaceOption option) override;
  bool isMultipartEntity() const override;  // it has children

  void dumpEntityInf(std::FILE* out) override;
  void dumpAttachedTnefMessageInf(std::FILE* out);

  VoErrorCode setFileName(const char* name) override;  // UTF-8
  VoErrorCode setContentType(const char* contentType) override;
  VoErrorCode setAttachment(VoMsgResourceLocator* content) override;

  const VoMsgResourceLocator* _getContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* _getRawContent(int& err, const VoMsgResourceLocator* target) override;
  const VoMsgResourceLocator* _getTextContent(int& err, const VoMsgResourceLocator* target,
                                              const char* charset) override;
  VoErrorCode copy(VoMsgEntity* from) override;
  VoMsgBufferedReader* getContextSource(int& err) override;

  VoErrorCode _writeToResource(VoMsgBufferedWriter* writer) override;  // the entity's records
  bool _isModified() override;
  const char* _getEntityName() override;

  // Writes the message in a type-4 entity, if any, as a stream.
  VoErrorCode _writeTnefMessageToResource(VoMsgBufferedWriter* writer);
  bool _isAttachedTnefMessageModified();

  // The steps of setContent.
  VoErrorCode _setRawContent(VoMsgResourceLocator* content, const char* contentType);
  VoErrorCode _createTnefRenderAttrib();  // kVoNoContent: no records
  VoErrorCode _setFileName(const char* name);
  VoErrorCode _setContentType(const char* contentType);
  VoErrorCode _setAttachment(VoMsgResourceLocator* content);

  // The records, read when first asked for; borrowed. Null when the source cannot be read or nobody has given any.
  VoMsgTnefBody* _getTnefBody() const;

  // Makes a child of that type under `messageEntity`; null without one.
  static VoMsgTnefEntity* _createChild(VoMsgTnefEntity* messageEntity, TnefEntityType type);
  // The same where nothing may be thrown: without memory null, and kVoNoMemory in `result`, which else stays.
  static VoMsgTnefEntity* _createChild(int& result, VoMsgTnefEntity* messageEntity, TnefEntityType type);
  // Makes the child that a property value becomes; null when it becomes none, as a stream does where `mayNest` is
  // false.
  static VoMsgTnefEntity* _createValueChild(VoMsgTnefEntity* messageEntity, unsigned short type, unsigned short id,
                                            const vomsg::detail::MapiValueHead& head, bool mayNest);
  // Whether a stream inside a message at that nesting level is still read.
  static bool _mayNest(unsigned level);
  // Reads the stream in an object value as a message under this entity. Codes as VoMsgTnefMessage::_parse.
  VoErrorCode _readNestedMessage(VoMsgBufferedReader& source, const vomsg::detail::MapiValueHead& head);

 protected:
  friend class VoMsgTnefMessage;
  friend class vomsg::detail::TnefParser;
  friend class vomsg::detail::NestedStreams;

  static constexpr std::uint32_t kNoRecord = 0xFFFFFFFFu;

  bool isValueType() const { return mType == kText || mType == kRichText || mType == kStream; }
  vomsg::detail::ValueContent valueContent() const;
  // Where the value that became this entity lies in the source.
  std::uint32_t valueOffset() const { return mReserved; }
  void setValueOffset(std::uint32_t offset) { mReserved = offset; }
  // The message whose stream the entity is part of; null outside of one.
  VoMsgTnefMessage* enclosingMessage() const;
  // Whether the entity has a record of that name id; tells without reading any.
  bool hasRecord(std::uint16_t nameId) const;
  VoErrorCode refuseEdit(bool typeFirst, bool hasArguments, const char* encoding) const;
  template <class Prepare>
  VoErrorCode change(Prepare&& prepare);
  template <class Edit>
  VoErrorCode prepareName(Edit& edit, const char* name) const;
  vomsg::detail::MessageSource* messageSource() const;
  std::string inCodepage(const char* utf8) const;
  VoErrorCode fetchContent(const VoMsgResourceLocator*& target);
  VoErrorCode fetchValue(const VoMsgResourceLocator*& target);
  void takeOver(const VoMsgTnefEntity& from);  // everything but the records
  bool hasRecords() const;

  mutable VoObjectStub<VoMsgTnefBody> mBody;  // empty until asked for
  std::uint32_t mFirstRecord = kNoRecord;     // in the message's index
  std::uint8_t mType;
  bool mIsChanged = false;  // content, records or children were set by a caller
};
