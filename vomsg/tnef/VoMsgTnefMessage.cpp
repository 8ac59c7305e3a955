#include "vomsg/tnef/VoMsgTnefMessage.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "vomsg/anomaly/VoMsgAnomaly.h"
#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/entity/VoMsgTreeSources.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/tnef/VoMsgMapiAttachment.h"
#include "vomsg/tnef/VoMsgTnefAttachData.h"
#include "vomsg/tnef/VoMsgTnefBody.h"
#include "vomsg/tnef/VoMsgTnefContent.h"
#include "vomsg/tnef/VoMsgTnefCursor.h"
#include "vomsg/tnef/VoMsgTnefIndex.h"
#include "vomsg/tnef/VoMsgTnefNestedStreams.h"
#include "vomsg/tnef/VoMsgTnefParser.h"
#include "vomsg/tnef/VoTnefInteger.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgTnefMessage";

std::unique_ptr<VoMsgTnefAttribute> makeRecord(std::uint8_t level, std::uint16_t typeId, std::uint16_t nameId) {
  switch (tnefRecordRow(nameId).kind) {
    case TnefRecordKind::inMemory:
      return std::make_unique<VoMsgTnefAttribute>(level, typeId, nameId);
    case TnefRecordKind::byReference:
      return std::make_unique<VoMsgTnefAttachData>(level, typeId, nameId);
    case TnefRecordKind::properties:
      return std::make_unique<VoMsgMapiAttachment>(level, typeId, nameId);
  }
  return nullptr;
}

}  // namespace

VoMsgTnefMessage::VoMsgTnefMessage() : VoMsgTnefEntity(kMessage) {}
VoMsgTnefMessage::VoMsgTnefMessage(const VoUUID_t* uuid) : VoMsgMailMessage(uuid), VoMsgTnefEntity(kMessage) {}
VoMsgTnefMessage::VoMsgTnefMessage(VoMsgEntity* parent) : VoMsgTnefEntity(kMessage) { mpParent = parent; }
VoMsgTnefMessage::~VoMsgTnefMessage() = default;

std::uint32_t VoMsgTnefMessage::getEntityTypeID() const { return kVoEntityTnefMessage; }
const char* VoMsgTnefMessage::_getEntityName() { return "VoMsgTnefMessage"; }
bool VoMsgTnefMessage::isMultipartEntity() const { return true; }

// --- reading

VoErrorCode VoMsgTnefMessage::readFrom(VoMsgResourceLocator* source) {
  return readFrom(source, {_getUUIDString(), getNestingLevel(), VoMsgExtraOption});
}

VoErrorCode VoMsgTnefMessage::readFrom(VoMsgResourceLocator* source, const MessagePlace& place) {
  if (!source) {
    VO_LOG(1, place.tag, "There is no resource to read from.");
    return kVoBadArgument;
  }
  if (mSource.getObject()) {
    VO_LOG(1, place.tag, "Resource of this message object has already existed.");
    return kVoNoMemory;
  }
  const VoErrorCode taken = guarded([&] {
    mCollectsAnomalies = VoMsgGetCollectAnomalies();
    mSource.adopt(std::unique_ptr<VoMsgResourceLocator>(source));
    mMessageSource.adopt(std::make_unique<MessageSource>(mSource, place.options));
    return kVoSuccess;
  });
  if (voFailed(taken)) mSource.free();
  const OpenSource opened(mMessageSource.getObject());
  mSourceIsLost = voFailed(taken) || !opened.reader() || isTooLarge(*opened.reader());
  if (mSourceIsLost) {
    VO_DIAGNOSTIC(0, place.tag, "parse error. (can not read message)");
    return voFailed(taken) ? taken : kVoReadFailed;
  }
  mStreamSize = opened.reader()->getSize();
  return _parse(0, place);
}

VoErrorCode VoMsgTnefMessage::readMailHeaderFrom(VoMsgResourceLocator*) {
  return VO_LOGGED(_getUUIDString(), kVoNotSupported);
}
VoErrorCode VoMsgTnefMessage::readMailBodyFrom(VoMsgResourceLocator*) {
  return VO_LOGGED(_getUUIDString(), kVoNotSupported);
}
VoErrorCode VoMsgTnefMessage::_readEntityBodyPart(VoMsgEntity*, VoMsgBoundaryType&) { return kVoNotSupported; }

void VoMsgTnefMessage::traceParse(const char* tag, const char* line) {
  voMessageLog(9, kLogSource, "_parse", __LINE__, tag, "%s", line);
}

VoErrorCode VoMsgTnefMessage::_parse(unsigned int limit) {
  return _parse(limit, {_getUUIDString(), getNestingLevel(), VoMsgExtraOption});
}

VoErrorCode VoMsgTnefMessage::_parse(unsigned int limit, const MessagePlace& place) {
  traceParse(place.tag, "begin: _parse");
  const OpenSource source(mMessageSource.getObject());
  if (!source.reader()) {
    VO_DIAGNOSTIC(0, place.tag, "parse error. (can not read message)");
    return kVoReadFailed;
  }
  _freeTree();
  mBody.free();
  mpIndex.reset();
  mFirstRecord = kNoRecord;
  mHasSignature = mIsChanged = false;
  const VoErrorCode code = guarded([&] { return TnefParser(*source.reader(), place).run(*this, limit); });
  if (voFailed(code)) VO_LOG(1, place.tag, "parse error. (error code:%x)", code);
  traceParse(place.tag, "end  : _parse");
  return code;
}

VoErrorCode VoMsgTnefMessage::_parseTnefMessage(VoMsgEntity* entity, VoMsgBufferedReader*) {
  if (!entity) return kVoSuccess;
  const bool isInnerMessage = (entity->getEntityTypeID() & kVoEntityIsMessage) && entity->getParentEntity();
  return _parseTnefMessage(
      entity, {entity->_getUUIDString(), entity->getNestingLevel() + (isInnerMessage ? 1 : 0), VoMsgExtraOption});
}

VoErrorCode VoMsgTnefMessage::_parseTnefMessage(VoMsgEntity* entity, const MessagePlace& place) {
  if (!entity) return kVoSuccess;
  guarded([&]() -> VoErrorCode {
    const auto* const part = dynamic_cast<const VoMsgRfc822Entity*>(entity);
    std::unique_ptr<VoMsgResourceLocator> content = decodedResource(part ? part->getBodySize() : 0);
    int code = 0;
    if (!content || !entity->getContent(code, content.get()) || voFailed(code)) return kVoNoContent;
    auto message = std::make_unique<VoMsgTnefMessage>(entity);
    message->readFrom(content.release(), place);
    if (message->_hasSignature()) TreeAccess::append(entity, message.release());
    return kVoSuccess;
  });
  return kVoSuccess;
}

VoErrorCode vomsg::detail::parseTnefChild(VoMsgEntity* part, const MessagePlace& place) {
  return VoMsgTnefMessage::_parseTnefMessage(part, place);
}

VoMsgBufferedReader* VoMsgTnefMessage::getContextSource(int& err) {
  MessageSource* const source = mMessageSource.getObject();
  VoMsgBufferedReader* const reader =
      source ? guardedOr<VoMsgBufferedReader*>(nullptr, [&] { return source->openReader(); }) : nullptr;
  if (!reader) VO_LOG(1, _getUUIDString(), "can not access original mail message.");
  err = static_cast<int>(reader ? kVoSuccess : kVoReadFailed);
  return reader;
}

void VoMsgTnefMessage::shareSource(const VoMsgTnefMessage& other, std::uint32_t offset, std::uint32_t size) {
  mSource = other.mSource;
  mMessageSource = other.mMessageSource;
  mReserved = offset;
  mStreamSize = size;
}

TnefIndex& VoMsgTnefMessage::changeableIndex() {
  if (!mpIndex) mpIndex = std::make_unique<TnefIndex>();
  return *mpIndex;
}

// --- records as objects

std::unique_ptr<VoMsgTnefAttribute> VoMsgTnefMessage::readRecord(std::size_t i, TnefCursor& cursor) const {
  const TnefIndex::Entry& entry = mpIndex->at(i);
  if (!cursor.moveTo(entry.offset)) return nullptr;
  const std::uint8_t level = cursor.readInt8();
  const std::uint16_t nameId = cursor.readInt16();
  const std::uint16_t typeId = cursor.readInt16();
  std::unique_ptr<VoMsgTnefAttribute> record = makeRecord(level, typeId, nameId);
  if (record && record->_readRecord(cursor, entry.offset) == kVoNoMemory) return nullptr;
  if (entry.isBroken) record->_setBroken();
  return record;
}

std::unique_ptr<VoMsgTnefBody> VoMsgTnefMessage::readRow(std::uint32_t first, VoMsgBufferedReader& source) const {
  auto body = std::make_unique<VoMsgTnefBody>();
  TnefCursor cursor(source);
  cursor.setRange(streamOffset(), streamOffset() + mStreamSize);
  cursor.setReadsStreams(mReadsStreams);
  const std::size_t end = mpIndex ? mpIndex->rowEnd(first) : first;
  for (std::size_t i = first; i < end; ++i) {
    std::unique_ptr<VoMsgTnefAttribute> record = readRecord(i, cursor);
    if (!record || voFailed(body->appendAttribute(record.release()))) return nullptr;
  }
  return body;
}

// Code pages are unsigned: all ones is no row of the table, though the table uses -1 for "none".
const char* VoMsgTnefMessage::codepageName(const VoMsgTnefAttribute* record) {
  if (!record) return nullptr;
  unsigned char bytes[4] = {};
  if (record->getData())
    std::memcpy(bytes, record->getData(), std::min<std::size_t>(record->getDataSize(), sizeof bytes));
  const std::uint32_t codepage = littleEndian(bytes, 4);
  const char* const name = codepage <= 0x7FFFFFFFu ? voCodepageToCharset(static_cast<int>(codepage)) : nullptr;
  return name ? name : "us-ascii";
}

const char* VoMsgTnefMessage::codepageCharset() const {
  if (!mpIndex || mFirstRecord == kNoRecord) return nullptr;
  if (mpIndex->isCharsetKnown) return mpIndex->charset;
  return guardedOr<const char*>(nullptr, [&]() -> const char* {
    const std::size_t at = mpIndex->find(mFirstRecord, kAttOemCodepage);
    if (at < mpIndex->count()) {
      const OpenSource source(mMessageSource.getObject());
      if (!source.reader()) return nullptr;
      TnefCursor cursor(*source.reader());
      mpIndex->charset = codepageName(readRecord(at, cursor).get());
    }
    mpIndex->isCharsetKnown = true;
    return mpIndex->charset;
  });
}

bool VoMsgTnefMessage::_isInBrokenList() const {
  const VoMsgTnefMessage* message = this;
  while (message) {
    const auto* const value = dynamic_cast<const VoMsgTnefEntity*>(message->mpParent);
    message = value ? value->enclosingMessage() : nullptr;
    if (message && message->mpIndex && message->mpIndex->isBrokenAt(value->valueOffset())) return true;
  }
  return false;
}

// --- writing

VoErrorCode VoMsgTnefMessage::writeTo(VoMsgResourceLocator* target) {
  if (!target) {
    VO_DIAGNOSTIC(0, _getUUIDString(), "There is no resource to write to.");
    return kVoBadArgument;
  }
  if (readsFrom(*this, *target)) {
    VO_LOG(9, _getUUIDString(), "The argument of ResourceLocator is same as message source file.");
    return kVoBadArgument;
  }
  const char* line = nullptr;  // what the log shall say
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    const OpenSource source(mMessageSource.getObject());  // open from the first look at it to the last
    line = "can not access original mail message.";
    if (mSourceIsLost || !source.reader() || !sourcesAreUnchanged(*this)) return kVoReadFailed;
    line = "mail message write error.";
    const std::unique_ptr<VoMsgBufferedWriter> writer(target->getOutputStream(VoMsgResourceLocator::dataPart));
    if (!writer) return kVoWriteFailed;
    WriterAccess::expect(*writer, mStreamSize);
    const VoErrorCode written = _writeToResource(writer.get());
    if (voFailed(written)) return written;
    if (!writer->flush()) return kVoWriteFailed;
    line = "can not access original mail message.";
    return sourcesAreUnchanged(*this) ? kVoSuccess : kVoReadFailed;
  });
  if (voFailed(code)) VO_DIAGNOSTIC(0, _getUUIDString(), "%s", line);
  return code;
}

MessageSource* vomsg::detail::tnefSource(const VoMsgEntity& entity) {
  const auto* const message = dynamic_cast<const VoMsgTnefMessage*>(&entity);
  return message ? message->messageSource() : nullptr;
}

VoErrorCode VoMsgTnefMessage::_writeToResource(VoMsgBufferedWriter* writer) {
  if (!writer) return kVoWriteFailed;
  const OpenSource source(mMessageSource.getObject());
  if (!source.reader()) {
    VO_DIAGNOSTIC(0, _getUUIDString(), "can not access original mail message.");
    return kVoReadFailed;
  }
  return guarded([&]() -> VoErrorCode {
    if (!isModified()) return copyRange(*source.reader(), *writer, streamOffset(), mStreamSize);
    const VoErrorCode code = NestedStreams(*source.reader()).install(*this);
    return voFailed(code) ? code : writeStream(*writer, *source.reader());
  });
}

// What no record could be made of follows the last record as it was.
VoErrorCode VoMsgTnefMessage::writeStream(VoMsgBufferedWriter& writer, VoMsgBufferedReader& source) {
  _tnefSetInt32(&writer, kVoTnefSignature);
  _tnefSetInt16(&writer, mKey);
  VoErrorCode code = writeRow(*this, writer, source);
  for (VoMsgEntity* child = getChildEntity(); child && !voFailed(code); child = child->getNextSiblingEntity())
    if (const auto* const entity = dynamic_cast<VoMsgTnefEntity*>(child)) code = writeRow(*entity, writer, source);
  if (voFailed(code)) return code;
  const auto tail = static_cast<std::uint32_t>(mEndPosition);
  const std::uint32_t end = streamOffset() + mStreamSize;
  return tail < end ? copyRange(source, writer, tail, end - tail) : kVoSuccess;
}

// The row of an entity that nobody looked at is one stretch of the source.
VoErrorCode VoMsgTnefMessage::writeRow(const VoMsgTnefEntity& entity, VoMsgBufferedWriter& writer,
                                       VoMsgBufferedReader& source) const {
  if (VoMsgTnefBody* const body = entity.mBody.getObject()) return body->writeBodyPart(&writer, &source);
  if (entity.mFirstRecord == kNoRecord || !mpIndex) return kVoSuccess;
  const std::size_t end = mpIndex->rowEnd(entity.mFirstRecord);
  const std::uint32_t from = mpIndex->at(entity.mFirstRecord).offset;
  const std::uint32_t to = end < mpIndex->count() ? mpIndex->at(end).offset : static_cast<std::uint32_t>(mEndPosition);
  return copyRange(source, writer, from, to - from);
}

VoErrorCode VoMsgTnefMessage::_writeEntityToResource(VoMsgEntity* entity, VoMsgBufferedWriter* writer) {
  const auto* const own = dynamic_cast<VoMsgTnefEntity*>(entity);
  if (!own) return kVoBadArgument;
  if (!writer) return kVoWriteFailed;
  return guarded([&]() -> VoErrorCode {
    const OpenSource source(mMessageSource.getObject());
    return source.reader() ? writeRow(*own, *writer, *source.reader()) : kVoReadFailed;
  });
}

VoErrorCode VoMsgTnefMessage::removeValue(VoMsgTnefEntity& child) {
  return guarded([&]() -> VoErrorCode {
    VoMsgTnefEntity* owner = &child;
    while (owner && !owner->hasRecords()) owner = dynamic_cast<VoMsgTnefEntity*>(owner->getNextSiblingEntity());
    VoMsgTnefBody* const body = owner ? owner->_getTnefBody() : nullptr;
    VoMsgMapiAttachment* const list = body ? body->_findList(child.valueOffset()) : nullptr;
    if (!list || !list->_findValue(child.valueOffset())) return kVoTnefMalformed;
    if (owner == &child) {
      VoMsgTnefEntity* neighbour = this;
      for (VoMsgEntity* entity = getChildEntity(); entity != &child; entity = entity->getNextSiblingEntity())
        if (auto* const before = dynamic_cast<VoMsgTnefEntity*>(entity)) neighbour = before;
      VoMsgTnefBody* const target = neighbour->_getTnefBody();
      if (!target) return kVoReadFailed;
      body->_moveAttributesTo(*target);
      neighbour->mIsChanged = true;
    }
    return list->_removeValue(child.valueOffset()) ? kVoSuccess : kVoTnefMalformed;
  });
}

VoMsgEntity* VoMsgTnefMessage::createWrapperEntity() {
  if (mpParent) {
    VO_LOGGED(_getUUIDString(), kVoBadArgument);
    return nullptr;
  }
  auto* const made = guardedOr<VoMsgEntity*>(nullptr, [&]() -> VoMsgEntity* {
    auto wrapper = std::make_unique<VoMsgMimeEntity>();
    if (voFailed(wrapper->setHeaderValue("Content-Type", "application/ms-tnef", "us-ascii", nullptr)) ||
        voFailed(wrapper->setHeaderValue("Content-Transfer-Encoding", "base64", "us-ascii", nullptr)))
      return nullptr;
    mIsChanged = true;
    TreeAccess::append(wrapper.get(), this);
    return wrapper.release();
  });
  if (!made) VO_LOGGED(_getUUIDString(), kVoNoMemory);
  return made;
}

// --- copying

VoMsgMailMessage* VoMsgTnefMessage::split() {
  VO_DIAGNOSTIC(2, _getUUIDString(), "spliting message.");
  VoMsgMailMessage* const copied = guardedOr<VoMsgMailMessage*>(nullptr, [&]() -> VoMsgMailMessage* {
    auto other = std::make_unique<VoMsgTnefMessage>(&getUUID());
    return voFailed(other->copyTree(*this)) ? nullptr : other.release();
  });
  if (copied)
    VO_DIAGNOSTIC(2, _getUUIDString(), "finished spliting message.");
  else
    VO_DIAGNOSTIC(0, _getUUIDString(), "split failed. (can not allocate memory)");
  return copied;
}

VoMsgEntity* vomsg::detail::copyTnefTree(VoMsgEntity* from) {
  const auto* const message = dynamic_cast<VoMsgTnefMessage*>(from);
  if (!message) return nullptr;
  auto other = std::make_unique<VoMsgTnefMessage>(&message->getUUID());
  return voFailed(other->_copyMessage(from)) ? nullptr : other.release();
}

VoErrorCode VoMsgTnefMessage::copy(VoMsgEntity* from) { return VO_LOGGED(_getUUIDString(), copyFrom(from)); }

VoErrorCode VoMsgTnefMessage::copyFrom(VoMsgEntity* from) {
  auto* const other = dynamic_cast<VoMsgTnefMessage*>(from);
  if (!other || other == this) return kVoBadArgument;
  if (mSource.getObject()) return kVoNoMemory;
  return guarded([&] {
    shareSource(*other, 0, 0);
    if (const MessageSource* const source = other->mMessageSource.getObject())
      mMessageSource.adopt(std::make_unique<MessageSource>(*source));
    return copyStream(*other);
  });
}

VoErrorCode VoMsgTnefMessage::_copyEntity(VoMsgEntity* from, VoMsgEntity* to) {
  return from && to ? to->copy(from) : kVoBadArgument;
}

VoErrorCode VoMsgTnefMessage::_copyMessage(VoMsgEntity* from) {
  auto* const other = dynamic_cast<VoMsgTnefMessage*>(from);
  if (!other || other == this) return kVoBadArgument;
  return guarded([&] { return copyTree(*other); });
}

// Records that nobody changed are read again from the shared source when they are asked for.
VoErrorCode VoMsgTnefMessage::copyStream(const VoMsgTnefMessage& from) {
  mKey = from.mKey;
  mHasSignature = from.mHasSignature;
  mReadsStreams = from.mReadsStreams;
  mReserved = from.mReserved;
  mStreamSize = from.mStreamSize;
  mEndPosition = from.mEndPosition;
  if (from.mpIndex) mpIndex = std::make_unique<TnefIndex>(*from.mpIndex);
  return copyRecords(from, *this);
}

VoErrorCode VoMsgTnefMessage::copyRecords(const VoMsgTnefEntity& from, VoMsgTnefEntity& to) {
  to.takeOver(from);
  VoMsgTnefBody* const body = from.mBody.getObject();
  if (!body || !(from.mIsChanged || body->_isModified())) return kVoSuccess;
  std::unique_ptr<VoMsgTnefBody> copied(body->copy(&to));
  if (!copied) return kVoNoMemory;
  to.mBody.adopt(std::move(copied));
  return kVoSuccess;
}

VoErrorCode VoMsgTnefMessage::copyTree(VoMsgTnefMessage& from) {
  VoErrorCode code = copyFrom(&from);
  VoMsgEntity* source = &from;
  VoMsgEntity* target = this;
  while (!voFailed(code)) {
    if (source->getChildEntity()) {
      source = source->getChildEntity();
    } else {
      while (source != &from && !source->getNextSiblingEntity()) {
        source = source->getParentEntity();
        target = target->getParentEntity();
      }
      if (source == &from) break;
      source = source->getNextSiblingEntity();
      target = target->getParentEntity();
    }
    const auto* const entity = dynamic_cast<VoMsgTnefEntity*>(source);
    if (!entity) return kVoBadArgument;
    if (const auto* const message = dynamic_cast<VoMsgTnefMessage*>(source)) {
      auto made = std::make_unique<VoMsgTnefMessage>(target);
      made->shareSource(*this, 0, 0);
      code = made->copyStream(*message);
      TreeAccess::append(target, made.get());
      target = made.release();
    } else {
      auto made = std::make_unique<VoMsgTnefEntity>(entity->getTnefEntityType());
      code = copyRecords(*entity, *made);
      TreeAccess::append(target, made.get());
      target = made.release();
    }
  }
  return code;
}

// --- what a stream has no part in

VoMsgMailSessionInfo* VoMsgTnefMessage::getSessionInfo() { return mpSessionInfo; }
void VoMsgTnefMessage::setSessionInfo(VoMsgMailSessionInfo* info) { mpSessionInfo = info; }
void* VoMsgTnefMessage::getUserData() { return mpUserData; }
void VoMsgTnefMessage::setUserData(void* data) { mpUserData = data; }
VoErrorCode VoMsgTnefMessage::stripSignaturePart() { return kVoSuccess; }
VoErrorCode VoMsgTnefMessage::_isPartialMessage() { return kVoSuccess; }

VoErrorCode VoMsgTnefMessage::insertDisclaimerMessage(VoMsgDisclaimerPosition_e, VoMsgResourceLocator*, int,
                                                      const char*, const char*) {
  return VO_LOGGED(_getUUIDString(), kVoDisclaimerRefused);
}

// --- dumps

void VoMsgTnefMessage::dumpEntityInf(std::FILE* out) {
  if (!out) return;
  VoMsgTnefEntity::dumpEntityInf(out);
  std::fprintf(out, "Key               : H'%.4x\n", unsigned{mKey});
}

void VoMsgTnefMessage::dumpMessageInf(std::FILE* out) {
  if (!out) return;
  std::fprintf(out, "(**** VoMsgTnefMessage Attachment ****)\n");
  VoMsgEntityIterator walk(this);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) entity->dumpEntityInf(out);
}
