// An Internet message (RFC 5322, RFC 2045): the root of its own tree, or nested in a message/rfc822 part.
#pragma once

#include <memory>

#include "vomsg/entity/VoMsgMailMessage.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"

class VoMsgMimeEntity;
namespace vomsg::detail {
struct MessagePlace;
class MessageReading;
}  // namespace vomsg::detail

class VOMSG_API VoMsgRfc822Message : public VoMsgMailMessage, public VoMsgRfc822Entity {
 public:
  VoMsgRfc822Message();                               // empty, with a UUID of its own
  explicit VoMsgRfc822Message(const VoUUID_t* uuid);  // `uuid` tags the message's log lines
  explicit VoMsgRfc822Message(VoMsgEntity* parent);   // nested; the caller links it
  ~VoMsgRfc822Message() override;
  std::uint32_t getEntityTypeID() const override;
  const char* _getEntityName() override;

  // The whole tree as a message of its own, yours; null without memory. Source and decoded content are shared, so
  // either may die first.
  VoMsgMailMessage* split() override;
  VoErrorCode readFrom(VoMsgResourceLocator* source) override;
  VoErrorCode readFrom(VoMsgResourceLocator* source, const vomsg::detail::MessagePlace& place);  // whose place is known
  VoErrorCode readMailHeaderFrom(VoMsgResourceLocator* source) override;                         // the same as readFrom
  VoErrorCode readMailBodyFrom(VoMsgResourceLocator* source) override;                           // the same as readFrom
  // Writes the message as it is now, any number of times: what nobody changed is copied from the source. A message
  // without source and content writes an empty line. kVoBadArgument: null, or a source of this tree; kVoReadFailed: the
  // source; kVoWriteFailed: the target, which stays as far as it was written.
  VoErrorCode writeTo(VoMsgResourceLocator* target) override;
  // Both borrowed from the host, who keeps them alive; never looked into.
  VoMsgMailSessionInfo* getSessionInfo() override;
  void setSessionInfo(VoMsgMailSessionInfo* info) override;
  VoErrorCode insertDisclaimerMessage(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer, int option,
                                      const char* srcCharset, const char* preferCharset) override;
  void* getUserData() override;
  void setUserData(void* data) override;
  // Removes the signatures of multipart/signed entities in which a caller changed something, which become
  // multipart/mixed; the others stay valid. A failure changes nothing.
  VoErrorCode stripSignaturePart() override;
  VoErrorCode _isPartialMessage() override;  // kVoPartialMessage for message/partial and message/external-body
  VoErrorCode _copyEntity(VoMsgEntity* from, VoMsgEntity* to) override;
  VoErrorCode _readEntityBodyPart(VoMsgEntity* entity, VoMsgBoundaryType& end) override;

  VoMsgEntity* createWrapperEntity() override;  // a message/rfc822 part that holds this message
  VoErrorCode copy(VoMsgEntity* from) override;
  VoErrorCode _copyMessage(VoMsgEntity* from);  // the whole tree of `from` becomes this message's
  VoErrorCode _writeToResource(VoMsgBufferedWriter* writer) override;
  // The entity that holds the main text: the first inline text part outside nested messages, plain text before
  // HTML unless `preferHtml`. Null when there is none.
  VoMsgEntity* _findMessageBody(bool preferHtml);
  static bool _isTnefMessage(VoMsgEntity* entity);
  void dumpMessageInf(std::FILE* out);

  // Predicates of message editing; see docs/editing.md.
  static bool _isAttachment(VoMsgEntity* entity);
  static bool _isAlternative(VoMsgEntity* entity);
  static bool _isParentAlternative(VoMsgEntity* entity);
  bool _hasAlternative();
  bool _isTextCalendar(VoMsgEntity* entity);
  bool _hasTextCalendar();

  // The steps of insertDisclaimerMessage, one for each way to add a disclaimer.
  VoErrorCode _defaultDisclaimerMessage(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer,
                                        const char* srcCharset, const char* preferCharset);
  VoErrorCode _defaultDisclaimerMessageHTML(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer,
                                            const char* srcCharset, const char* preferCharset);
  VoErrorCode _defaultDisclaimerMessageTextCalendar(VoMsgDisclaimerPosition_e position,
                                                    VoMsgResourceLocator* disclaimer, const char* srcCharset,
                                                    const char* preferCharset);
  VoErrorCode _newDisclaimerMessage(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer,
                                    const char* srcCharset, const char* preferCharset);
  VoErrorCode _wrapDisclaimerMessage(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer,
                                     const char* srcCharset, const char* preferCharset);
  VoErrorCode _wrapNewDisclaimerMessage(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer,
                                        const char* srcCharset, const char* preferCharset);
  VoErrorCode _DisclaimerMessageAttachment(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer,
                                           const char* srcCharset, const char* preferCharset);

 private:
  friend class vomsg::detail::MessageReading;

  // The two ends of readFrom; between them the opened source is read. _endReading() turns the parser's code into the
  // one to return.
  VoErrorCode _beginReading(VoMsgResourceLocator* source, const vomsg::detail::MessagePlace& place);
  VoErrorCode _endReading(VoErrorCode code, const vomsg::detail::MessagePlace& place);

  bool isUnreadable(const VoMsgBufferedReader* reader) const;
  VoErrorCode _insertDiscMsgToText(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer,
                                   const char* srcCharset, const char* preferCharset);
  VoErrorCode _insertDiscMsgToHTML(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer,
                                   const char* srcCharset, const char* preferCharset);
  VoErrorCode _insertDiscMsgToTextCalendar(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer,
                                           const char* srcCharset, const char* preferCharset);
  VoErrorCode _copyOriginalMessage(std::unique_ptr<VoMsgResourceLocator>& original);
  VoErrorCode _createWrapRfc822MailEntity(std::unique_ptr<VoMsgMimeEntity>& part);
  // `onlyEssentials`: of the header fields only those that a reader needs stay outside.
  VoErrorCode _createWrapEntity(VoMsgResourceLocator* disclaimer, const char* srcCharset, const char* preferCharset,
                                bool onlyEssentials);
  VoErrorCode _addDisclaimerPart(bool inFront, bool asAttachment, VoMsgResourceLocator* disclaimer,
                                 const char* srcCharset, const char* preferCharset);
};
