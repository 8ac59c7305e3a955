// The resource that a message's entities are read from, and the one reader they share. Entities hold it by a
// VoObjectStub, so a copy may outlive the message it came from.
#pragma once

#include <memory>
#include <string_view>

#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoObjectStub.h"

namespace vomsg::detail {

class MessageSource {
 public:
  // `options`: the bits of VoMsgExtraOption by which the message is read, and stays read when the process changes them.
  MessageSource(const VoObjectStub<VoMsgResourceLocator>& resource, int options);
  ~MessageSource();

  int options() const { return mOptions; }
  VoMsgResourceLocator* resource() const { return mResource.getObject(); }
  const VoObjectStub<VoMsgResourceLocator>& sharedResource() const { return mResource; }
  // The opened reader; borrowed until it is closed. Null when the resource cannot be read.
  VoMsgBufferedReader* openReader();
  void closeReader();
  bool isOpen() const;
  // What ends the lines of the message, by its first one: LF alone, or CR LF for everything else. Looked up once.
  std::string_view lineEnd();

 private:
  VoObjectStub<VoMsgResourceLocator> mResource;
  int mOptions;
  std::string_view mLineEnd;  // empty until asked for
  std::unique_ptr<VoMsgBufferedReader> mpReader;
};

// Keeps the reader open while it lives; closes it at the end when it was closed before.
class OpenSource {
 public:
  explicit OpenSource(MessageSource* source);
  ~OpenSource();
  OpenSource(const OpenSource&) = delete;
  OpenSource& operator=(const OpenSource&) = delete;
  VoMsgBufferedReader* reader() const { return mpReader; }
  // What the reader reads; null without a source.
  const VoObjectStub<VoMsgResourceLocator>* resource() const {
    return mpSource ? &mpSource->sharedResource() : nullptr;
  }

 private:
  MessageSource* mpSource;
  VoMsgBufferedReader* mpReader = nullptr;
  bool mWasOpen = false;
};

// Whether the resource has 2^31 bytes or more: offsets of bodies are signed. `reader` is an open one on it.
bool isTooLarge(VoMsgResourceLocator* resource, VoMsgBufferedReader& reader);
// Whether both are files, and the same one, be it under two paths: writing to one would destroy the other before it
// is read.
bool isSameFile(VoMsgResourceLocator* a, VoMsgResourceLocator* b);

}  // namespace vomsg::detail
