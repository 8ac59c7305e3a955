// A message: the host's handle on an entity tree and on the resource it was read from.
#pragma once

#include <cstdint>

#include "vomsg/entity/VoMsgEntity.h"
#include "vomsg/foundation/VoObjectStub.h"
#include "vomsg/foundation/VoUUID.h"

class VoMsgAnomalyList;
class VoMsgMailSessionInfo;

// Where a disclaimer goes; any other value counts as bottom.
enum VoMsgDisclaimerPosition_e : int { kVoDisclaimerTop = 1, kVoDisclaimerBottom = 2 };

// The option bits of insertDisclaimerMessage.
enum VoMsgDisclaimerOption_e : int {
  kVoDisclaimerModeMask = 0x03,
  kVoDisclaimerBody = 0,              // insert into the existing body
  kVoDisclaimerNewBody = 1,           // a body of its own
  kVoDisclaimerWrap = 2,              // wrap the message
  kVoDisclaimerWrapNew = 3,           // wrap it under a fresh header
  kVoDisclaimerHtml = 0x04,           // insert into HTML mail too, instead of wrapping it
  kVoDisclaimerWrapOnRefusal = 0x08,  // kVoDisclaimerRefused falls back to wrapping
  kVoDisclaimerTnefOk = 0x10,         // TNEF children do not force wrapping
  kVoDisclaimerTnefNewBody = 0x40,    // TNEF children force mode 1 at the bottom instead of mode 3
  kVoDisclaimerAttach = 0x80          // attach the disclaimer wherever a wrap would happen
};

class VOMSG_API VoMsgMailMessage : public virtual VoMsgEntity {
 public:
  ~VoMsgMailMessage() override;

  // An independent copy, yours; it may outlive this message. Null on failure.
  virtual VoMsgMailMessage* split() = 0;
  // Reads the message in `source`, once per object. A message without a source takes the resource over, whatever the
  // code: the message, its copies and what was parsed from it share it, and the last of them deletes it; it must come
  // from new. Only a second call leaves its resource with the caller (kVoNoMemory). After a failure the tree read so
  // far stays usable and an unedited write still gives the source back, or a code when it could not be read at all. The
  // message remembers what the source looked like: a file's size, device, inode and time of last change, and of
  // anything else the size. Once that differs, whatever would have to be read from the source fails with
  // kVoReadFailed. A change that leaves the size alone, within one tick of the file system's clock, goes unnoticed.
  virtual VoErrorCode readFrom(VoMsgResourceLocator* source) = 0;
  virtual VoErrorCode readMailHeaderFrom(VoMsgResourceLocator* source) = 0;
  virtual VoErrorCode readMailBodyFrom(VoMsgResourceLocator* source) = 0;
  // Writes the message to `target`, borrowed, which must not be a resource or a file that anything in the tree is read
  // from (kVoBadArgument). kVoReadFailed: the source cannot be read, or is not what it was. In both cases the target is
  // untouched; when the source turns out to have changed while it was copied (kVoReadFailed, too), or the target
  // refuses a byte (kVoWriteFailed), it is left as written.
  virtual VoErrorCode writeTo(VoMsgResourceLocator* target) = 0;
  virtual VoMsgMailSessionInfo* getSessionInfo() = 0;
  virtual void setSessionInfo(VoMsgMailSessionInfo* info) = 0;  // borrowed
  // Adds a disclaimer. On success the message takes `disclaimer` over and deletes it; on failure the caller
  // keeps it. `preferCharset` null means "utf-8".
  virtual VoErrorCode insertDisclaimerMessage(VoMsgDisclaimerPosition_e position, VoMsgResourceLocator* disclaimer,
                                              int option, const char* srcCharset, const char* preferCharset) = 0;
  virtual void* getUserData() = 0;
  virtual void setUserData(void* data) = 0;
  virtual VoErrorCode stripSignaturePart() = 0;
  virtual VoErrorCode _isPartialMessage() = 0;
  virtual VoErrorCode _copyEntity(VoMsgEntity* from, VoMsgEntity* to) = 0;
  virtual VoErrorCode _readEntityBodyPart(VoMsgEntity* entity, VoMsgBoundaryType& end) = 0;

  // The deepest nesting level that is still extracted.
  static int mMaxExtractLevel;
  static int getMaxExtractLevel() { return mMaxExtractLevel; }

  // What is odd about the message, its entities and the messages inside, in document order: found by reading the
  // sources again, which costs about as much as decoding every part once. Borrowed until the message changes or is
  // asked again. Null when VoMsgSetCollectAnomalies() was off at readFrom(), a source cannot be read, or memory ran
  // out; empty when nothing is odd. What was edited since readFrom() is passed over.
  const VoMsgAnomalyList* getAnomalies();

  const char* _getUUIDString() override;
  const VoUUID_t& getUUID() const { return mUUID; }

 protected:
  VoMsgMailMessage();                               // a new UUID
  explicit VoMsgMailMessage(const VoUUID_t* uuid);  // null: a new one

  VoObjectStub<VoMsgResourceLocator> mSource;
  VoMsgMailSessionInfo* mpSessionInfo = nullptr;
  void* mpUserData = nullptr;
  int mEndPosition = 0;
  VoUUID_t mUUID;
  char mUUIDString[37];
  bool mSourceIsLost = false;       // what was handed over to be read could not be kept, or not be opened
  bool mCollectsAnomalies = false;  // as it was set when reading began
  // What a message in a TNEF stream keeps, here where it fills what the text leaves: there are many of those.
  bool mHasSignature = false;
  bool mReadsStreams = false;  // those in its values have been read as messages
  std::uint32_t mStreamSize = 0;
};
