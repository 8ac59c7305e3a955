// The children that values become when a property list is read into objects, one by one or as a whole: for callers of
// the read operations of attributes, properties and values. The parse of a stream makes its children itself.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/tnef/VoMsgTnefCursor.h"
#include "vomsg/tnef/VoMsgTnefEntity.h"

class VoMsgBufferedReader;

namespace vomsg::detail {

struct MapiValueHead;

class MapiChildren {
 public:
  // Under `message`, or none at all for a null one; from `source`, which may be null.
  MapiChildren(VoMsgTnefEntity* message, VoMsgBufferedReader* source) : mpMessage(message), mpSource(source) {}

  // Calls `body(cursor)` over the source from its position on, and takes the source to where that ended.
  // kVoReadFailed: no source, or none whose size can be told; else what it returns.
  template <class Body>
  VoErrorCode read(Body&& body) {
    return guarded([&]() -> VoErrorCode {
      if (!mpSource) return kVoReadFailed;
      TnefCursor cursor(*mpSource);
      if (!cursor.isReadable()) return kVoReadFailed;
      cursor.setReadsStreams(mpMessage && VoMsgTnefEntity::_mayNest(mpMessage->getNestingLevel()));
      const VoErrorCode code = body(cursor);
      cursor.settle();
      return code;
    });
  }

  // Makes the child that a value of that property becomes, if any, and reads the stream that it holds.
  VoErrorCode make(std::uint16_t type, std::uint16_t id, const MapiValueHead& head, bool readsStreams);
  VoMsgTnefEntity* last() const { return mpLast; }
  const char* tag() const { return mpMessage ? mpMessage->_getUUIDString() : ""; }

 private:
  VoMsgTnefEntity* mpMessage;
  VoMsgBufferedReader* mpSource;
  VoMsgTnefEntity* mpLast = nullptr;
};

}  // namespace vomsg::detail
