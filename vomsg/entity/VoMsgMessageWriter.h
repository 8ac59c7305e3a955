// Writes an entity tree: what nobody changed is copied from the source in stretches as large as possible, what a
// caller changed is written anew, and nothing is added that was missing.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgMultipartBody.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"

namespace vomsg::detail {

enum class TransferEncoding : std::uint8_t;

class MessageWriter {
 public:
  explicit MessageWriter(VoMsgBufferedWriter& out) : mOut(out) {}

  // Writes `root` with its subtree. A message that is the root of its source is the whole source.
  VoErrorCode write(VoMsgRfc822Entity& root);

 private:
  // A multipart that is being written, its children one after the other.
  struct OpenMultipart {
    VoMsgRfc822Entity* entity;
    VoMsgEntity* next;                               // the child to write next
    VoMsgRfc822Entity* current;                      // the child just written
    VoMsgEntity* behind;                             // attachments behind the close delimiter that a caller changed
    const VoMsgRfc822Entity* firstInPlace;           // the first child that comes from the source
    std::vector<VoMsgMultipartBody::Range> removed;  // in the order of the source
    std::size_t nextRemoved;                         // the first of them that no gap has passed yet
    std::uint64_t position;  // how far the source of the entity's body has been written or dropped
    std::uint64_t end;       // where that body ends
    std::string_view lineEnd;
    std::string boundary;
    std::string sourceBoundary;  // differs when a caller changed the boundary
    bool isNew;                  // nothing of the body comes from a source
    bool seenInPlace;            // a child from the source has been written
    std::string close;           // what ends the parts, for a multipart that had no delimiters of its own
  };

  void findChanges(VoMsgRfc822Entity& root);
  bool isUnchanged(const VoMsgEntity& entity) const { return !mAnew.contains(&entity); }

  VoErrorCode begin(VoMsgRfc822Entity& entity, bool wholeSource);
  VoErrorCode writeHeader(VoMsgRfc822Entity& entity);
  VoErrorCode writeLeaf(VoMsgRfc822Entity& entity, std::uint64_t end);
  static TransferEncoding encodingForChild(const VoMsgRfc822Entity& entity, const VoMsgEntity& child);
  VoErrorCode writeChild(VoMsgRfc822Entity& entity, VoMsgEntity& child);
  VoErrorCode openMultipart(VoMsgRfc822Entity& entity, std::uint64_t end);
  VoErrorCode beforeChild(OpenMultipart& open, VoMsgRfc822Entity& child);
  VoErrorCode copyToPart(OpenMultipart& open, const VoMsgRfc822Entity& part, bool isLast);
  VoErrorCode afterChild(OpenMultipart& open);
  VoErrorCode separate(OpenMultipart& open);
  VoErrorCode afterLastChild(OpenMultipart& open);
  VoErrorCode gotoInsertionPoint(OpenMultipart& open);

  VoErrorCode copyGap(OpenMultipart& open, std::uint64_t end);
  VoErrorCode copyLastGap(OpenMultipart& open);
  VoErrorCode copyDelimiters(OpenMultipart& open, std::uint64_t begin, std::uint64_t end);
  std::uint64_t delimiterBefore(OpenMultipart& open, std::uint64_t offset);
  std::uint64_t lineEndBefore(OpenMultipart& open, std::uint64_t offset);
  std::uint64_t behindLineEnd(OpenMultipart& open, std::uint64_t offset);

  VoMsgBufferedReader* readerOf(const VoMsgRfc822Entity& entity);
  VoErrorCode copySource(const VoMsgRfc822Entity& entity, std::uint64_t begin, std::uint64_t end);
  VoErrorCode put(std::string_view text);
  std::string sourceBytes(const VoMsgRfc822Entity& entity, std::uint64_t begin, std::uint64_t end);
  std::string_view lineEndOf(const VoMsgRfc822Entity& entity);
  std::string sourceBoundaryOf(const VoMsgRfc822Entity& entity);

  VoMsgBufferedWriter& mOut;
  std::unordered_set<const VoMsgEntity*> mAnew;    // entities whose subtree is not copied as it stands
  std::unordered_set<const VoMsgEntity*> mEdited;  // those of them in whose subtree a caller changed something
  std::map<MessageSource*, std::unique_ptr<OpenSource>> mSources;
  std::vector<OpenMultipart> mOpen;
  bool mLineIsEnded = true;  // what was written last needs no line end before a delimiter line
  bool mEndsInCr = false;    // new content ends in a CR, which an LF behind it must not take for its own
};

}  // namespace vomsg::detail
