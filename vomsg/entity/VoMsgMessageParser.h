// Reads one message into its tree: header blocks are surveyed, bodies are cut at the delimiters in force, nested
// content is handed to whoever reads it. Everything is recorded as ranges of the source. There is no recursion per
// multipart, and none per nested message: those are handed to whoever drives the parser.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/entity/VoMsgBodyScanner.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgShortage.h"
#include "vomsg/header/VoMsgHeaderSurvey.h"

class VoMsgRfc822Message;

namespace vomsg::detail {

enum class TransferEncoding : std::uint8_t;

// A message that a parser came to, linked into the tree already, and what it is to be read from.
struct NestedMessage {
  VoMsgRfc822Message* message = nullptr;
  std::unique_ptr<VoMsgResourceLocator> content;
};

class MessageParser {
 public:
  // `root` is the message at `place`; its entities share `source`, which is open and stands at the start. `survey` is
  // storage that parsers may share as long as only one is at work.
  MessageParser(VoMsgRfc822Entity& root, const MessagePlace& place, const VoObjectStub<MessageSource>& source,
                HeaderSurvey& survey);

  // Reads until the message is read, or a nested one has to be read first: then the parser is waiting. Whoever drives
  // it takes the nested message, has it read at childPlace(), and resumes the parser with the code of that.
  void start();
  bool isWaiting() const { return mNested.message != nullptr || mIsNestedTaken; }
  NestedMessage takeNested();
  void resume(VoErrorCode nestedCode);
  // Gives the reader of the source back; to be called while waiting. resume() opens the source again.
  void suspend();
  // Of a message in a part.
  MessagePlace childPlace() const { return {mTag, static_cast<unsigned>(mPartLevel), mSource.getObject()->options()}; }

  // How it ended; to be called once, when the parser is not waiting any more. A failure leaves the tree read so far;
  // together its entities still cover the whole source. What cannot be looked into because memory, room or a descriptor
  // was refused ends the parse: kVoNoMemory for texts, elsewhere the code of what was refused. What cannot because it
  // is broken does not.
  VoErrorCode conclude();

 private:
  // A multipart whose parts are being read. Its boundary is the one of the same depth in the table, except for the
  // innermost one while its epilogue is read: that boundary is no longer in force.
  struct OpenMultipart {
    VoMsgRfc822Entity* entity;
    std::string charset;  // what its parts inherit for 8-bit names; empty: us-ascii
    bool belowSigned;     // for its parts
    bool isDigest;        // its parts are messages unless they say something else
    bool inEpilogue;
    std::uint32_t epilogueOffset;
    std::uint32_t closeTerminator;  // bytes of the line end behind the close delimiter
  };

  // What may be found in the body of a leaf, decided from its header block.
  struct LeafPlan {
    bool message;
    bool tnefByType;
    bool tnefByName;
    bool text;
    TransferEncoding encoding;
  };

  bool readsOn() const { return (mSource.getObject()->options() & kVoOptionReadOn) != 0; }
  // The code that ends the reading, or a success to read on with where the host wants that.
  VoErrorCode endsReading(VoErrorCode code);
  void surveyRoot();
  void unmark();
  VoErrorCode proceed(VoErrorCode code);
  VoErrorCode passDelimiter();
  VoErrorCode wake();
  void giveUp();
  VoErrorCode _parseEntity(VoMsgRfc822Entity& entity);
  VoErrorCode _isMalformedMessage(VoMsgRfc822Entity& entity, bool& multipart);
  VoMsgEntityLayout surveyedLayout(VoMsgEntityLayout placed, bool isChild) const;
  void markForRewriting(VoMsgRfc822Entity& entity);
  LeafPlan planLeaf(VoMsgRfc822Entity& entity);
  std::string_view declaredType() const;
  bool _isNeedToExtract(VoMsgRfc822Entity& entity);
  bool _isTnefMessage() const;
  bool _isTnefByName(VoMsgRfc822Entity& entity);
  bool _isTextMessage() const;
  bool namedLike(VoMsgRfc822Entity& entity, bool (*likeThis)(std::string_view name));
  VoErrorCode _parseSingleBody(std::uint64_t end);
  VoErrorCode lookInside(VoMsgRfc822Entity& entity);
  VoErrorCode _parseRfc822Message(VoMsgRfc822Entity& entity);
  VoErrorCode _parseTextMessage(VoMsgRfc822Entity& entity);
  VoErrorCode closeInnermost(std::uint64_t end);
  VoErrorCode closeAll(std::uint64_t end);

  ShortageWatch mShortage;
  VoMsgRfc822Entity& mRoot;
  const VoObjectStub<MessageSource>& mSource;
  std::reference_wrapper<VoMsgBufferedReader> mReader;  // of nothing while suspended
  std::uint64_t mSize;                                  // of the source
  std::uint64_t mSuspendedAt = 0;
  bool mIsSuspended = false;
  const char* mTag;          // for log lines
  std::string mRootCharset;  // what the message inherits from the part it lies in; empty: us-ascii
  int mRootLevel;            // nesting level of the message itself
  int mPartLevel;            // nesting level of its parts
  BoundaryTable mBoundaries;
  std::vector<OpenMultipart> mOpen;
  HeaderSurvey& mSurvey;
  std::string mBoundary;                 // of the multipart whose header block was just read
  VoMsgRfc822Entity* mUnread = nullptr;  // the entity whose header block is being read
  VoMsgRfc822Entity* mLeaf = nullptr;    // the leaf whose body is being read
  LeafPlan mPlan{};
  VoErrorCode mCode = kVoSuccess;
  VoErrorCode mFirstCode = kVoSuccess;  // what was read on behind
  BodyEnd mEnd;                         // what ended the body that was read last
  std::uint64_t mBodyEnd = 0;           // where that body ended
  bool mIsRead = false;
  NestedMessage mNested;
  VoMsgRfc822Entity* mNestedPart = nullptr;  // the part that it lies in
  bool mIsNestedTaken = false;
};

}  // namespace vomsg::detail
