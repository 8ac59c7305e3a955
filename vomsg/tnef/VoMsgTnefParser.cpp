// The parse of a TNEF stream.
//
// A stream is a signature, a key, and records up to its end. Most records are stepped over: the message's index notes
// where they lie, and the entity that was current owns them. An attAttachRendData or attBody record makes a new child
// current. A property list is walked value by value, because three kinds of value become children too: the text, the
// formatted text, and an object that is a stream of its own. All of a list's children are linked as they come; the
// last one becomes current and owns the list.
//
// A stream inside a value is read where it lies, bounded by the value, as one more level of an explicit stack. So
// nothing is copied however deep streams nest, no depth can exhaust the call stack, and every byte is looked at once
// for each level it belongs to. What goes wrong inside goes wrong for the value, its list, and the stream around.
#include "vomsg/tnef/VoMsgTnefParser.h"

#include <algorithm>
#include <memory>

#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/tnef/VoMsgTnefIndex.h"
#include "vomsg/tnef/VoMsgTnefMessage.h"
#include "vomsg/tnef/VoTnefInteger.h"
#include "vomsg/tnef/tables/VoTnefRecordKinds.h"

namespace vomsg::detail {

VoErrorCode TnefParser::run(VoMsgTnefMessage& message, std::uint32_t limit) {
  if (!mCursor.isReadable()) return kVoReadFailed;
  VoErrorCode code = enter(message, mPlace.level, limit);
  if (voFailed(code)) return code;
  for (;;) {
    bool isDone = false;
    if (!voFailed(code)) code = advance(mLevels.back(), isDone);
    if (voFailed(code)) {
      own(mLevels.back(), true);
      isDone = true;
    }
    if (!isDone) continue;
    if (mLevels.size() > 1) VoMsgTnefMessage::traceParse(mPlace.tag, "end  : _parse");
    mLevels.pop_back();
    if (mLevels.empty()) return code;
    const Level& outer = mLevels.back();
    mCursor.setRange(outer.message->streamOffset(), outer.message->streamOffset() + outer.message->mStreamSize);
  }
}

VoErrorCode TnefParser::enter(VoMsgTnefMessage& message, unsigned nestingLevel, std::uint32_t limit) {
  const std::uint32_t start = message.streamOffset();
  const std::uint32_t end = start + message.mStreamSize;
  mCursor.setRange(start, end);
  if (mCursor.readInt32() != kVoTnefSignature) return kVoBadFormat;
  message.mHasSignature = true;
  message.mReadsStreams = VoMsgTnefEntity::_mayNest(nestingLevel);
  message.mKey = mCursor.readInt16();
  message.mEndPosition = static_cast<int>(mCursor.position());
  const std::uint64_t stop = limit == 0 ? end : std::min<std::uint64_t>(std::uint64_t{start} + limit, end);
  mLevels.push_back({&message, &message, nestingLevel, static_cast<std::uint32_t>(stop)});
  return kVoSuccess;
}

VoErrorCode TnefParser::advance(Level& level, bool& isDone) {
  switch (level.step) {
    case Step::record:
      isDone = mCursor.left() == 0 || mCursor.position() >= level.stop;
      return isDone ? kVoSuccess : beginRecord(level);
    case Step::list:
      return advanceList(level);
  }
  return kVoSuccess;
}

// A record that is taken into memory may claim more than is left, as long as the stream is that long; one that is kept
// by reference may not.
VoErrorCode TnefParser::beginRecord(Level& level) {
  level.recordOffset = mCursor.position();
  mCursor.readInt8();
  level.nameId = mCursor.readInt16();
  mCursor.readInt16();
  const TnefRecordRow row = tnefRecordRow(level.nameId);
  level.dataLength = mCursor.readInt32();
  level.dataOffset = mCursor.position();
  switch (row.kind) {
    case TnefRecordKind::properties:
      level.list = MapiListWalk(mCursor.readInt32());
      level.lastChild = nullptr;
      level.step = Step::list;
      return kVoSuccess;
    case TnefRecordKind::inMemory:
      if (level.dataLength > mCursor.size()) return kVoReadFailed;
      mCursor.skip(std::min(level.dataLength, mCursor.left()));
      break;
    case TnefRecordKind::byReference:
      if (!mCursor.skip(level.dataLength)) return kVoReadFailed;
      break;
  }
  endRecord(level, row.opensChild ? VoMsgTnefEntity::_createChild(level.message, VoMsgTnefEntity::kRecord) : nullptr);
  return kVoSuccess;
}

VoErrorCode TnefParser::advanceList(Level& level) {
  MapiListWalk::Event event;
  const VoErrorCode code = level.list.next(mCursor, event);
  if (voFailed(code)) return code;
  switch (event) {
    case MapiListWalk::Event::property:
      break;
    case MapiListWalk::Event::value:
      return takeValue(level);
    case MapiListWalk::Event::end:
      finishList(mCursor, level.dataOffset, level.dataLength);
      endRecord(level, level.lastChild);
      break;
  }
  return kVoSuccess;
}

VoErrorCode TnefParser::takeValue(Level& level) {
  const MapiPropertyHead& property = level.list.property();
  const MapiValueHead& value = level.list.value();
  VoMsgTnefEntity* const child = VoMsgTnefEntity::_createValueChild(level.message, property.type, property.id, value,
                                                                    level.message->mReadsStreams);
  if (child) level.lastChild = child;
  if (!child || !value.holdsStream) return kVoSuccess;

  auto nested = std::make_unique<VoMsgTnefMessage>(child);
  nested->shareSource(*level.message, value.dataOffset + kInterfaceIdBytes, value.length - kInterfaceIdBytes);
  VoMsgTnefMessage& message = *nested;
  TreeAccess::append(child, nested.release());
  VoMsgTnefMessage::traceParse(mPlace.tag, "begin: _parse");
  // The root of a tree does not count as an enclosing message.
  const unsigned inside = level.nestingLevel + (level.message->getParentEntity() ? 1 : 0);
  return enter(message, inside, 0);  // `level` may have moved by now
}

void TnefParser::endRecord(Level& level, VoMsgTnefEntity* child) {
  mCursor.skip(std::min(kTnefCheckSumBytes, mCursor.left()));
  if (child) level.current = child;
  own(level, false);
  level.message->mEndPosition = static_cast<int>(mCursor.position());
  level.step = Step::record;
}

void TnefParser::own(Level& level, bool isBroken) {
  TnefIndex& index = level.message->changeableIndex();
  VoMsgTnefEntity& owner = *level.current;
  const bool isFirst = owner.mFirstRecord == VoMsgTnefEntity::kNoRecord;
  if (isFirst) owner.mFirstRecord = static_cast<std::uint32_t>(index.count());
  index.append({level.recordOffset, level.nameId, isFirst, isBroken});
}

}  // namespace vomsg::detail

// For whoever reads a single value; in the parse of a whole stream the stack above takes care of it.
VoErrorCode VoMsgTnefEntity::_readNestedMessage(VoMsgBufferedReader& source, const vomsg::detail::MapiValueHead& head) {
  auto nested = std::make_unique<VoMsgTnefMessage>(this);
  if (const VoMsgTnefMessage* const message = enclosingMessage()) nested->shareSource(*message, 0, 0);
  nested->mReserved = head.dataOffset + vomsg::detail::kInterfaceIdBytes;
  nested->mStreamSize = head.length - vomsg::detail::kInterfaceIdBytes;
  VoMsgTnefMessage& message = *nested;
  _appendChild(nested.release());
  const vomsg::detail::MessagePlace place{message._getUUIDString(), message.getNestingLevel(), VoMsgExtraOption};
  return vomsg::detail::TnefParser(source, place).run(message, 0);
}
