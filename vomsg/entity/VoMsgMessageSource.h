// The resource that a message's entities are read from, and the one reader they share. Entities hold it by a
// VoObjectStub, so a copy may outlive the message it came from.
#pragma once

#include <memory>
#include <string_view>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgResourceState.h"
#include "vomsg/foundation/VoObjectStub.h"

namespace vomsg::detail {

class MessageSource {
 public:
  // `options`: the bits of VoMsgExtraOption by which the message is read, and stays read when the process changes them.
  MessageSource(const VoObjectStub<VoMsgResourceLocator>& resource, int options);
  MessageSource(const MessageSource& other);  // the same source, with a reader of its own
  MessageSource& operator=(const MessageSource&) = delete;
  ~MessageSource();

  int options() const { return mOptions; }
  // What is decoded of the message counts there; null without a limit. Shared with the message around this one.
  const std::shared_ptr<DecodedBudget>& budget() const { return mpBudget; }
  VoMsgResourceLocator* resource() const { return mResource.getObject(); }
  const VoObjectStub<VoMsgResourceLocator>& sharedResource() const { return mResource; }
  // The opened reader; borrowed until it is closed. Null when the resource cannot be read.
  // Null, too, when the resource is not what it was when it was opened first: what was parsed then says nothing about
  // what is there now. A file's size, place and time of last change are compared, of memory the size alone.
  VoMsgBufferedReader* openReader();
  void closeReader();
  bool isOpen() const;
  // What ends the lines of the message, by its first one: LF alone, or CR LF for everything else. Looked up once.
  std::string_view lineEnd();
  // The same comparison now, through the open reader where there is one.
  bool isUnchanged();

  // What the bytes lie in in the end, borrowed, and what that looked like when they were read.
  VoMsgResourceLocator* whole() const;
  const ResourceState& wholeState() const;

 private:
  bool isAsRead(VoMsgBufferedReader& reader);

  VoObjectStub<VoMsgResourceLocator> mResource;
  ResourceState mState;  // unknown before the first opening, and for a range, which knows that of its whole
  int mOptions;
  std::string_view mLineEnd;  // empty until asked for
  const std::shared_ptr<DecodedBudget> mpBudget = DecodedBudget::forMessage();
  std::unique_ptr<VoMsgBufferedReader> mpReader;
};

// Keeps the reader open while it lives; closes it at the end when it was closed before. What is decoded meanwhile
// counts for the message.
class OpenSource {
 public:
  explicit OpenSource(MessageSource* source);
  ~OpenSource();
  OpenSource(const OpenSource&) = delete;
  OpenSource& operator=(const OpenSource&) = delete;
  VoMsgBufferedReader* reader() const { return mpReader; }
  // What the reader reads; may be null.
  const MessageSource* source() const { return mpSource; }

 private:
  MessageSource* mpSource;
  VoMsgBufferedReader* mpReader = nullptr;
  bool mWasOpen = false;
  const DecodedScope mScope;
};

// Whether an open reader has 2^31 bytes or more before it: offsets of bodies are signed.
bool isTooLarge(VoMsgBufferedReader& reader);

// False when surely no living source reads from that file. Asked before a tree is searched for one that does, which
// costs as much as the tree is large.
bool mayBeSource(const ResourceState& file);

}  // namespace vomsg::detail
