// Reads one message into its tree: header blocks are surveyed, bodies are cut at the delimiters in force, nested
// content is handed to whoever reads it. Everything is recorded as ranges of the source. There is no recursion per
// multipart; nested messages recurse, bounded by the extract level.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgShortage.h"
#include "vomsg/header/VoMsgHeaderSurvey.h"

namespace vomsg::detail {

enum class TransferEncoding : std::uint8_t;

class MessageParser {
 public:
  // `root` is the message at `place`; its entities share `source`, whose opened reader is `reader` and stands at the
  // start.
  MessageParser(VoMsgRfc822Entity& root, const MessagePlace& place, const VoObjectStub<MessageSource>& source,
                VoMsgBufferedReader& reader);

  // A failure leaves the tree read so far; together its entities still cover the whole source. What cannot be looked
  // into because memory, room or a descriptor was refused ends the parse: kVoNoMemory for texts, elsewhere the code of
  // what was refused. What cannot because it is broken does not.
  VoErrorCode parse();

 private:
  // A multipart whose parts are being read. Its boundary is the one of the same depth in the table, except for the
  // innermost one while its epilogue is read: that boundary is no longer in force.
  struct OpenMultipart {
    VoMsgRfc822Entity* entity;
    std::string charset;  // what its parts inherit for 8-bit names; empty: us-ascii
    bool belowSigned;     // for its parts
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

  VoErrorCode read();
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
  VoErrorCode readNested(VoMsgRfc822Entity& entity);
  VoErrorCode _parseRfc822Message(VoMsgRfc822Entity& entity);
  VoErrorCode _parseTextMessage(VoMsgRfc822Entity& entity);
  // Of a message in a part.
  MessagePlace childPlace() const { return {mTag, static_cast<unsigned>(mPartLevel), mSource.getObject()->options()}; }
  VoErrorCode closeInnermost(std::uint64_t end);
  VoErrorCode closeAll(std::uint64_t end);

  ShortageWatch mShortage;
  VoMsgRfc822Entity& mRoot;
  const VoObjectStub<MessageSource>& mSource;
  VoMsgBufferedReader& mReader;
  const char* mTag;          // for log lines
  std::string mRootCharset;  // what the message inherits from the part it lies in; empty: us-ascii
  int mRootLevel;            // nesting level of the message itself
  int mPartLevel;            // nesting level of its parts
  BoundaryTable mBoundaries;
  std::vector<OpenMultipart> mOpen;
  HeaderSurvey mSurvey;
  VoMsgRfc822Entity* mUnread = nullptr;  // the entity whose header block is being read
  VoMsgRfc822Entity* mLeaf = nullptr;    // the leaf whose body is being read
  LeafPlan mPlan{};
};

}  // namespace vomsg::detail
