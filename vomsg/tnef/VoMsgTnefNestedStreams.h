// Putting edited streams back into the values that they came from.
#pragma once

#include <unordered_map>

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgBufferedReader;
class VoMsgEntity;
class VoMsgTnefEntity;
class VoMsgTnefMessage;

namespace vomsg::detail {

class NestedStreams {
 public:
  explicit NestedStreams(VoMsgBufferedReader& source) : mSource(source) {}

  // Every modified message inside `message`, at whatever depth, becomes the new content of its value, so that the
  // records of `message` hold all changes. kVoTnefMalformed: a value lies in a list that could not be read to its end
  // and cannot be written; kVoWriteFailed, kVoNoMemory.
  VoErrorCode install(VoMsgTnefMessage& message);

 private:
  VoErrorCode installOne(VoMsgTnefMessage& nested);
  // The entity that owns the list which `child` came from: that child or a later one; or null.
  VoMsgTnefEntity* ownerOf(VoMsgTnefEntity& child);

  VoMsgBufferedReader& mSource;
  std::unordered_map<const VoMsgEntity*, VoMsgTnefEntity*> mOwners;
};

}  // namespace vomsg::detail
