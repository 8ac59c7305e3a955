#include "vomsg/entity/VoMsgRfc822Message.h"

#include <algorithm>
#include <memory>

#include "vomsg/anomaly/VoMsgAnomaly.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgMessageReading.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgMessageWriter.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/entity/VoMsgTreeSources.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgOptions.h"

namespace {

using namespace vomsg::detail;

constexpr char kLogSource[] = "VoMsgRfc822Message";
constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;

}  // namespace

VoMsgRfc822Message::VoMsgRfc822Message() = default;
VoMsgRfc822Message::VoMsgRfc822Message(const VoUUID_t* uuid) : VoMsgMailMessage(uuid) {}
VoMsgRfc822Message::VoMsgRfc822Message(VoMsgEntity*) {}
VoMsgRfc822Message::~VoMsgRfc822Message() = default;

std::uint32_t VoMsgRfc822Message::getEntityTypeID() const { return kVoEntityRfc822Message; }
const char* VoMsgRfc822Message::_getEntityName() { return "VoMsgRfc822Message"; }

VoMsgMailSessionInfo* VoMsgRfc822Message::getSessionInfo() { return mpSessionInfo; }
void VoMsgRfc822Message::setSessionInfo(VoMsgMailSessionInfo* info) { mpSessionInfo = info; }
void* VoMsgRfc822Message::getUserData() { return mpUserData; }
void VoMsgRfc822Message::setUserData(void* data) { mpUserData = data; }

// ---- reading

VoErrorCode VoMsgRfc822Message::readFrom(VoMsgResourceLocator* source) {
  return readFrom(source, {_getUUIDString(), getNestingLevel(), VoMsgExtraOption});
}

VoErrorCode VoMsgRfc822Message::readFrom(VoMsgResourceLocator* source, const MessagePlace& place) {
  return guarded([&] { return MessageReading().run(*this, source, place); });
}

namespace {

// The lines of a reading name the operation that was called, for each message in the tree.
void diagnoseReading(unsigned level, unsigned line, const char* tag, const char* text) {
  if (isDiagnosed(level)) voMsgDiagnosticLog(level, kLogSource, "readFrom", line, tag, "%s", text);
}

}  // namespace

VoErrorCode VoMsgRfc822Message::_beginReading(VoMsgResourceLocator* source, const MessagePlace& place) {
  const char* const tag = place.tag;
  diagnoseReading(2, __LINE__, tag, "parsing message.");
  if (!source) return logged(kVoBadArgument, kLogSource, "readFrom", __LINE__, [&] { return tag; });
  if (mSource.getObject()) {
    voMessageLog(1, kLogSource, "readFrom", __LINE__, tag, "Resource of this message object has already existed.");
    return kVoNoMemory;
  }
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    mCollectsAnomalies = VoMsgGetCollectAnomalies();
    mSource.adopt(std::unique_ptr<VoMsgResourceLocator>(source));
    mMessageSource.adopt(std::make_unique<MessageSource>(mSource, place.options));
    return kVoSuccess;
  });
  mSourceIsLost = voFailed(code);
  if (mSourceIsLost) {
    mSource.free();
    diagnoseReading(0, __LINE__, tag, "parse error. (can not allocate memory)");
    return kVoNoMemory;
  }
  MessageSource* const opened = mMessageSource.getObject();
  auto* const reader = guardedOr<VoMsgBufferedReader*>(nullptr, [opened] { return opened->openReader(); });
  if (reader && !isTooLarge(*reader)) return kVoSuccess;
  mSourceIsLost = true;
  opened->closeReader();
  diagnoseReading(0, __LINE__, tag, "parse error. (can not read message)");
  return kVoReadFailed;
}

VoErrorCode VoMsgRfc822Message::_endReading(VoErrorCode code, const MessagePlace& place) {
  const char* const tag = place.tag;
  MessageSource* const opened = mMessageSource.getObject();
  if (opened->isOpen()) mEndPosition = std::max(0, static_cast<int>(opened->openReader()->getOffset()));
  opened->closeReader();
  if (!voFailed(code)) {
    diagnoseReading(2, __LINE__, tag, "finished parsing message.");
    return _isPartialMessage();
  }
  switch (code & 0xFFFFu) {
    case kVoTnefMalformed & 0xFFFFu:
    case kVoMalformed & 0xFFFFu:
      diagnoseReading(0, __LINE__, tag, "detected as malformed mail message.");
      break;
    case kVoNoMemory & 0xFFFFu:
      diagnoseReading(0, __LINE__, tag, "parse error. (can not allocate memory)");
      break;
    case kVoPartialMessage & 0xFFFFu:
      diagnoseReading(0, __LINE__, tag, "message/partial data is not supported.");
      break;
    default:
      voMsgDiagnosticLog(0, kLogSource, "readFrom", __LINE__, tag, "parse error. (error code:%x)", code);
  }
  return code;
}

VoErrorCode VoMsgRfc822Message::readMailHeaderFrom(VoMsgResourceLocator* source) { return readFrom(source); }
VoErrorCode VoMsgRfc822Message::readMailBodyFrom(VoMsgResourceLocator* source) { return readFrom(source); }

VoErrorCode VoMsgRfc822Message::_isPartialMessage() {
  if (mLayout.hasHeaderRange && !mLayout.mayBePartial && !mHeader.getObject()) return kVoSuccess;
  VoMsgEntityIterator walk(this);
  const VoMsgEntity* const first = walk.first();
  const std::string_view type = viewOf(first ? first->getContentType() : nullptr);
  if (!equalNoCase(type, "message/partial") && !equalNoCase(type, "message/external-body")) return kVoSuccess;
  VO_DIAGNOSTIC(0, _getUUIDString(), "message/partial data is not supported.");
  return kVoPartialMessage;
}

VoErrorCode VoMsgRfc822Message::_readEntityBodyPart(VoMsgEntity* entity, VoMsgBoundaryType& end) {
  return entity ? entity->_readBodyPart(end) : kVoBadArgument;
}

// ---- writing

VoErrorCode VoMsgRfc822Message::writeTo(VoMsgResourceLocator* target) {
  if (!target) return VO_LOGGED(_getUUIDString(), kVoBadArgument);
  if (readsFrom(*this, *target)) {
    VO_LOG(9, _getUUIDString(), "The argument of ResourceLocator is same as message source file.");
    return kVoBadArgument;
  }
  const char* line = nullptr;  // what the log shall say, where the step that failed has not said it
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    const OpenSource source(mMessageSource.getObject());  // open from the first look at it to the last
    line = "can not access original mail message.";
    if (isUnreadable(source.reader()) || !sourcesAreUnchanged(*this)) return kVoReadFailed;
    line = "mail message write error.";
    const std::unique_ptr<VoMsgBufferedWriter> writer(target->getOutputStream(kData));
    if (!writer) return kVoWriteFailed;
    const VoErrorCode written = _writeToResource(writer.get());
    line = voFailed(written) ? nullptr : "can not access original mail message.";
    return voFailed(written) || sourcesAreUnchanged(*this) ? written : kVoReadFailed;
  });
  if (voFailed(code) && line) VO_DIAGNOSTIC(0, _getUUIDString(), "%s", line);
  return code;
}

// Whether the source could not be read once, or cannot be read now.
bool VoMsgRfc822Message::isUnreadable(const VoMsgBufferedReader* reader) const {
  return mSourceIsLost || (mMessageSource.getObject() && (!reader || !mLayout.hasHeaderRange));
}

VoErrorCode VoMsgRfc822Message::_writeToResource(VoMsgBufferedWriter* writer) {
  if (!writer) return VO_LOGGED(_getUUIDString(), kVoBadArgument);
  VO_DIAGNOSTIC(2, _getUUIDString(), mSource.getObject() ? "writing back message." : "writing new composed message.");
  const OpenSource source(mMessageSource.getObject());
  if (isUnreadable(source.reader())) {
    VO_DIAGNOSTIC(0, _getUUIDString(), "can not access original mail message.");
    return kVoReadFailed;
  }
  const VoErrorCode code = VoMsgRfc822Entity::_writeToResource(writer);
  if (voFailed(code)) {
    VO_DIAGNOSTIC(0, _getUUIDString(), "mail message write error.");
    return code;
  }
  VO_DIAGNOSTIC(2, _getUUIDString(), "finished writing message.");
  return kVoSuccess;
}

// ---- copying

VoMsgMailMessage* VoMsgRfc822Message::split() {
  const char* const tag = _getUUIDString();
  VO_DIAGNOSTIC(2, tag, "spliting message.");
  std::unique_ptr<VoMsgRfc822Message> other(new (std::nothrow) VoMsgRfc822Message(&getUUID()));
  if (!other) {
    VO_DIAGNOSTIC(2, tag, "split failed. (can not allocate memory)");
    return nullptr;
  }
  if (voFailed(other->_copyMessage(this))) {
    VO_DIAGNOSTIC(0, tag, "split failed. (can not allocate memory)");
    return nullptr;
  }
  VO_DIAGNOSTIC(2, tag, "finished spliting message.");
  return other.release();
}

VoErrorCode VoMsgRfc822Message::copy(VoMsgEntity* from) {
  const VoErrorCode code = VoMsgRfc822Entity::copy(from);
  if (voFailed(code)) return code;
  const auto* const other = dynamic_cast<VoMsgRfc822Message*>(from);
  if (!other) return kVoSuccess;
  mSource = other->mSource;
  mEndPosition = other->mEndPosition;
  mSourceIsLost = other->mSourceIsLost;
  return kVoSuccess;
}

VoErrorCode VoMsgRfc822Message::_copyEntity(VoMsgEntity* from, VoMsgEntity* to) {
  return from && to ? to->copy(from) : kVoBadArgument;
}

// Walks both trees in step; children with trees of their own kind copy themselves.
VoErrorCode VoMsgRfc822Message::_copyMessage(VoMsgEntity* from) {
  return guarded([&]() -> VoErrorCode {
    VoErrorCode code = _copyEntity(from, this);
    VoMsgEntity* source = from;
    VoMsgEntity* target = this;
    bool descend = true;
    while (!voFailed(code)) {
      VoMsgEntity* next = descend ? source->getChildEntity() : nullptr;
      if (!next) {
        while (source != from && !source->getNextSiblingEntity()) {
          source = source->getParentEntity();
          target = target->getParentEntity();
        }
        if (source == from) return kVoSuccess;
        next = source->getNextSiblingEntity();
        target = target->getParentEntity();
      }
      source = next;
      std::unique_ptr<VoMsgEntity> made;
      descend = true;
      if (dynamic_cast<VoMsgRfc822Message*>(source)) {
        made = std::make_unique<VoMsgRfc822Message>(target);
      } else if (dynamic_cast<VoMsgRfc822Entity*>(source)) {
        made = std::make_unique<VoMsgMimeEntity>();
      } else {
        made.reset(_isTnefMessage(source) ? copyTnefTree(source) : copyEmbeddedTree(source));
        descend = false;
      }
      if (!made) return kVoNoMemory;
      if (descend) code = _copyEntity(source, made.get());
      VoMsgEntity* const child = made.get();
      TreeAccess::append(target, made.release());
      target = child;
    }
    return code;
  });
}

// A message among parts stands in a message/rfc822 part.
VoMsgEntity* VoMsgRfc822Message::createWrapperEntity() {
  return guardedOr<VoMsgEntity*>(nullptr, [&]() -> VoMsgEntity* {
    auto wrapper = std::make_unique<VoMsgMimeEntity>();
    if (voFailed(wrapper->setHeaderValue("Content-Type", "message/rfc822", "us-ascii", nullptr))) return nullptr;
    TreeAccess::append(wrapper.get(), this);
    return wrapper.release();
  });
}

// ---- questions

bool VoMsgRfc822Message::_isTnefMessage(VoMsgEntity* entity) {
  return entity && entity->getEntityTypeID() == kVoEntityTnefMessage;
}

VoMsgEntity* VoMsgRfc822Message::_findMessageBody(bool preferHtml) {
  VoMsgEntity* fallback = nullptr;
  VoMsgEntityIterator walk(this, [](VoMsgEntity* entity, signed char& descend) -> signed char {
    const bool isText = !entity->_isMultiEmbededEntity();  // else what stands behind a close delimiter
    if (!isText || (entity->getParentEntity() && !entity->isMultipartEntity())) descend = 0;  // has its own text
    return isText;
  });
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) {
    if (entity->isMultipartEntity() || _isAttachment(entity)) continue;
    const bool isPlain = !entity->getContentType() || entity->isContentType("text", "plain");
    const bool isHtml = entity->isContentType("text", "html");
    if (preferHtml ? isHtml : isPlain) return entity;
    if (!fallback && (isPlain || isHtml)) fallback = entity;
  }
  return fallback;
}

void VoMsgRfc822Message::dumpMessageInf(std::FILE* out) {
  if (!out) return;
  VoMsgEntityIterator walk(this);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) entity->dumpEntityInf(out);
}
