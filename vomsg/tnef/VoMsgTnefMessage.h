// A TNEF stream as a message: the "winmail.dat" of an Internet message, a bare stream, or a stream in an attachment
// of another one. It reads records without copying them, shows what they hold as entities, and writes back every
// record that was not changed byte for byte.
#pragma once

#include <cstdint>
#include <memory>

#include "vomsg/entity/VoMsgMailMessage.h"
#include "vomsg/tnef/VoMsgTnefEntity.h"

class VoMsgTnefAttribute;
class VoMsgTnefBody;
namespace vomsg::detail {
class MessageSource;
struct MessagePlace;
class TnefCursor;
class TnefIndex;
class NestedStreams;
}  // namespace vomsg::detail

class VOMSG_API VoMsgTnefMessage : public VoMsgMailMessage, public VoMsgTnefEntity {
 public:
  VoMsgTnefMessage();
  explicit VoMsgTnefMessage(const VoUUID_t* uuid);
  // Inside `parent`, the MIME entity or the type-4 entity that holds the stream; the caller links it.
  explicit VoMsgTnefMessage(VoMsgEntity* parent);
  ~VoMsgTnefMessage() override;
  std::uint32_t getEntityTypeID() const override;
  const char* _getEntityName() override;
  bool isMultipartEntity() const override;  // always

  VoMsgMailMessage* split() override;
  // kVoBadArgument: null; kVoNoMemory: the message has a source already, and the caller keeps this one; kVoReadFailed:
  // it cannot be read; else the codes of _parse.
  VoErrorCode readFrom(VoMsgResourceLocator* source) override;
  VoErrorCode readMailHeaderFrom(VoMsgResourceLocator* source) override;  // kVoNotSupported
  VoErrorCode readMailBodyFrom(VoMsgResourceLocator* source) override;    // kVoNotSupported
  // An unmodified message is written as the bytes it was read from. kVoBadArgument: null, or something that the tree is
  // read from, before anything is opened; kVoReadFailed: the source cannot be read or has changed; kVoWriteFailed.
  VoErrorCode writeTo(VoMsgResourceLocator* target) override;
  VoMsgMailSessionInfo* getSessionInfo() override;
  void setSessionInfo(VoMsgMailSessionInfo* info) override;
  // kVoDisclaimerRefused: nothing changes, and the caller keeps the disclaimer.
  VoErrorCode insertDisclaimerMessage(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer, int option,
                                      const char* srcCharset, const char* preferCharset) override;
  void* getUserData() override;
  void setUserData(void* data) override;
  VoErrorCode stripSignaturePart() override;  // success: a stream has no signature parts
  VoErrorCode _isPartialMessage() override;   // success
  VoErrorCode _copyEntity(VoMsgEntity* from, VoMsgEntity* to) override;
  VoErrorCode _readEntityBodyPart(VoMsgEntity* entity, VoMsgBoundaryType& end) override;  // kVoNotSupported

  VoErrorCode copy(VoMsgEntity* from) override;
  VoErrorCode _copyMessage(VoMsgEntity* from);  // the whole tree of `from` becomes this message's
  VoMsgBufferedReader* getContextSource(int& err) override;
  vomsg::detail::MessageSource* messageSource() const { return mMessageSource.getObject(); }
  VoErrorCode _writeToResource(VoMsgBufferedWriter* writer) override;
  VoErrorCode _writeEntityToResource(VoMsgEntity* entity, VoMsgBufferedWriter* writer) override;
  void dumpEntityInf(std::FILE* out) override;
  void dumpMessageInf(std::FILE* out);

  // Reads the stream, anew where it was read before; with a `limit` other than 0, no record that begins so many bytes
  // after its start. What was read before a failure stays in the tree. kVoBadFormat: no TNEF stream; kVoReadFailed: a
  // record beyond the end; and the codes of the record classes.
  VoErrorCode _parse(unsigned int limit);
  unsigned short _getTnefKey() const { return mKey; }
  bool _hasSignature() const { return mHasSignature; }  // the source is a TNEF stream, however damaged

  // A new MIME entity of type application/ms-tnef, yours, with this message, which must be in no tree, as its child.
  // Null on failure.
  VoMsgEntity* createWrapperEntity() override;

  // Reads the content of `entity`, a part of an Internet message, as TNEF; on success the message becomes its child.
  // Always success: a damaged part never fails the message around it.
  static VoErrorCode _parseTnefMessage(VoMsgEntity* entity, VoMsgBufferedReader* source);
  // The same where the place of the new message is known.
  static VoErrorCode _parseTnefMessage(VoMsgEntity* entity, const vomsg::detail::MessagePlace& place);

  // Whether the stream lies, at whatever depth, in a list that could not be read to its end. Such a list is not written
  // anew, so nothing inside can be changed.
  bool _isInBrokenList() const;

  // Inside another stream it is a stretch of that one.
  std::uint32_t getStreamSize() const { return mStreamSize; }

 private:
  friend class VoMsgTnefEntity;
  friend class vomsg::detail::TnefParser;
  friend class vomsg::detail::NestedStreams;

  // The same for a message whose place is known.
  VoErrorCode readFrom(VoMsgResourceLocator* source, const vomsg::detail::MessagePlace& place);
  VoErrorCode _parse(unsigned int limit, const vomsg::detail::MessagePlace& place);
  // A line of _parse.
  static void traceParse(const char* tag, const char* line);
  // Becomes the message of a stretch of the other's source.
  void shareSource(const VoMsgTnefMessage& other, std::uint32_t offset, std::uint32_t size);
  vomsg::detail::TnefIndex& changeableIndex();
  // One record, and the records from `first` to the end of their row, as objects; null on failure.
  std::unique_ptr<VoMsgTnefAttribute> readRecord(std::size_t i, vomsg::detail::TnefCursor& cursor) const;
  std::unique_ptr<VoMsgTnefBody> readRow(std::uint32_t first, VoMsgBufferedReader& source) const;
  // The charset name for an attOemCodepage record; "us-ascii" where there is none, null for null.
  static const char* codepageName(const VoMsgTnefAttribute* record);
  const char* codepageCharset() const;

  VoErrorCode writeRow(const VoMsgTnefEntity& entity, VoMsgBufferedWriter& writer, VoMsgBufferedReader& source) const;
  // Key, records and tail as they stand.
  VoErrorCode writeStream(VoMsgBufferedWriter& writer, VoMsgBufferedReader& source);
  // Takes the value that became `child` out of its list, and gives the child's records to its neighbour.
  VoErrorCode removeValue(VoMsgTnefEntity& child);

  VoErrorCode copyFrom(VoMsgEntity* from);
  VoErrorCode copyStream(const VoMsgTnefMessage& from);
  static VoErrorCode copyRecords(const VoMsgTnefEntity& from, VoMsgTnefEntity& to);
  VoErrorCode copyTree(VoMsgTnefMessage& from);

  std::uint16_t mKey = 0;
  VoObjectStub<vomsg::detail::MessageSource> mMessageSource;
  std::unique_ptr<vomsg::detail::TnefIndex> mpIndex;  // null without records
  // mReserved says where the stream begins.
  std::uint32_t streamOffset() const { return mReserved; }
};
