// Reads TNEF streams into trees of entities.
#pragma once

#include <cstdint>
#include <vector>

#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/tnef/VoMsgMapiList.h"
#include "vomsg/tnef/VoMsgTnefCursor.h"

class VoMsgBufferedReader;
class VoMsgTnefEntity;
class VoMsgTnefMessage;

namespace vomsg::detail {

class TnefParser {
 public:
  // For the outermost message at `place`.
  TnefParser(VoMsgBufferedReader& source, const MessagePlace& place) : mCursor(source), mPlace(place) {}

  // Reads the stream that `message` knows the place of. Codes as VoMsgTnefMessage::_parse.
  VoErrorCode run(VoMsgTnefMessage& message, std::uint32_t limit);

 private:
  enum class Step : std::uint8_t {
    record,  // before the level byte of a record, or at the end of the stream
    list     // inside a property list
  };

  // A stream that is being read: the outermost one, and those that lie inside the value just read of the one before.
  struct Level {
    VoMsgTnefMessage* message;
    VoMsgTnefEntity* current;  // the owner of the next record
    unsigned nestingLevel;
    std::uint32_t stop;  // no record begins from here on
    Step step = Step::record;

    // The record that is being read.
    std::uint32_t recordOffset = 0;
    std::uint16_t nameId = 0;
    // Of a property list: where its record's data lies, the walk through the list, and the last child it made.
    std::uint32_t dataOffset = 0;
    std::uint32_t dataLength = 0;
    MapiListWalk list = {};
    VoMsgTnefEntity* lastChild = nullptr;
  };

  VoErrorCode enter(VoMsgTnefMessage& message, unsigned nestingLevel, std::uint32_t limit);
  VoErrorCode advance(Level& level, bool& isDone);
  VoErrorCode beginRecord(Level& level);
  VoErrorCode advanceList(Level& level);
  VoErrorCode takeValue(Level& level);
  void endRecord(Level& level, VoMsgTnefEntity* child);
  void own(Level& level, bool isBroken);

  TnefCursor mCursor;
  const MessagePlace& mPlace;
  std::vector<Level> mLevels;
};

}  // namespace vomsg::detail
