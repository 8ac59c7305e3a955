// What a MIME entity is and declares: its header block, made from the source when it is first asked for, the tree
// operations, and the description of its content. The content itself is in VoMsgRfc822Content.cpp.

#include "vomsg/entity/VoMsgRfc822Entity.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "vomsg/entity/VoMsgBodyScanner.h"
#include "vomsg/entity/VoMsgCommonValue.h"
#include "vomsg/entity/VoMsgEditUndo.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgMessageWriter.h"
#include "vomsg/entity/VoMsgMultipartBody.h"
#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/entity/VoMsgSingleBody.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/foundation/VoMsgTreeEpoch.h"
#include "vomsg/header/VoMsgStructuredValue.h"

namespace {

using namespace vomsg::detail;

constexpr char kLogSource[] = "VoMsgRfc822Entity";
constexpr unsigned kAtEnd = 0xFFFFFFFFu;

}  // namespace

VoMsgRfc822Entity::VoMsgRfc822Entity() = default;
VoMsgRfc822Entity::~VoMsgRfc822Entity() = default;

// ---- the header block

namespace {

// A block without the byte order mark that may stand before it where a message is read on.
std::string_view fieldsOf(std::string_view block, bool readsOn) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (readsOn && block.starts_with(kByteOrderMark)) block.remove_prefix(kByteOrderMark.size());
  return block;
}

}  // namespace

// A block that could not be read is not kept: the next question asks the source again. Throws Failure, or what a lack
// of memory throws.
VoMsgEntityHeader& VoMsgRfc822Entity::_buildHeader(const char* defaultCharset) const {
  auto header = std::make_unique<VoMsgEntityHeader>();
  header->setChild(mLayout.isChildHeader);
  header->setHeaderRange(mLayout.headerOffset, mLayout.headerSize);
  if (mLayout.hasHeaderRange) {
    const OpenSource source(mMessageSource.getObject());
    VoMsgBufferedReader* const reader = source.reader();
    const std::uint32_t size = mLayout.headerSize;
    if (!reader || !moveTo(*reader, mLayout.headerOffset)) throw Failure{kVoReadFailed};
    ReaderWindow::fill(*reader);
    const std::string_view window = ReaderWindow::buffered(*reader);
    std::string block;
    if (window.size() < size) {
      block.resize(size);
      if (reader->read(block.data(), size) != size) throw Failure{kVoReadFailed};
    }
    const bool readsOn = (mMessageSource.getObject()->options() & kVoOptionReadOn) != 0;
    const std::string_view bytes = block.empty() ? window.substr(0, size) : block;
    const VoErrorCode code = header->parseSurveyedBlock(fieldsOf(bytes, readsOn), defaultCharset);
    if (voFailed(code)) throw Failure{code};
  }
  return *mHeader.adopt(std::move(header));
}

VoMsgEntityHeader& VoMsgRfc822Entity::_header() const {
  VoMsgEntityHeader* const present = mHeader.getObject();
  VoMsgEntityHeader& header = present ? *present : _buildHeader("us-ascii");
  header._setLogOwner(const_cast<VoMsgRfc822Entity*>(this),
                      [](void* owner) { return static_cast<VoMsgRfc822Entity*>(owner)->_getUUIDString(); });
  return header;
}

VoMsgEntityHeader* VoMsgRfc822Entity::getEntityHeader() const {
  return guardedOr<VoMsgEntityHeader*>(nullptr, [&] { return &_header(); });
}

VoErrorCode VoMsgRfc822Entity::_readHeaderPart(const char* defaultCharset) {
  return VO_LOGGED(_getUUIDString(), guarded([&]() -> VoErrorCode {
                     if (!mMessageSource.getObject()) return kVoReadFailed;
                     _buildHeader(defaultCharset);
                     return kVoSuccess;
                   }));
}

const char* VoMsgRfc822Entity::getHeaderValue(const char* name, const char* charset) const {
  return guardedOr<const char*>(nullptr, [&]() -> const char* {
    VoMsgHeaderField* const field = _header().getHeader(name);
    return field ? field->getFieldValue(charset) : nullptr;
  });
}

const char* VoMsgRfc822Entity::getRawHeaderValue(const char* name) const {
  return guardedOr<const char*>(nullptr, [&]() -> const char* {
    const VoMsgHeaderField* const field = _header().getHeader(name);
    return field ? field->getRawFieldValue() : nullptr;
  });
}

const char* VoMsgRfc822Entity::getHeaderParameterValue(const char* name, const char* param, const char* charset) const {
  return guardedOr<const char*>(nullptr, [&]() -> const char* {
    VoMsgHeaderField* const field = _header().getHeader(name);
    return field ? field->getParameterValue(param, charset) : nullptr;
  });
}

const char* VoMsgRfc822Entity::getRawHeaderParameterValue(const char* name, const char* param) const {
  return guardedOr<const char*>(nullptr, [&]() -> const char* {
    const VoMsgHeaderField* const field = _header().getHeader(name);
    return field && param ? field->getRawParameterValue(param) : nullptr;
  });
}

// Changes of the block log for themselves; what is left to say here is that there is no block.
template <class Change>
VoErrorCode VoMsgRfc822Entity::_changeHeader(const char* function, Change change) {
  VoMsgEntityHeader* header = nullptr;
  const VoErrorCode code = guarded([&] {
    header = &_header();
    return kVoSuccess;
  });
  if (header) return change(*header);
  return _logged(function, code);
}

VoErrorCode VoMsgRfc822Entity::_logged(const char* function, VoErrorCode code) {
  return logged(code, kLogSource, function, __LINE__, [this] { return _getUUIDString(); });
}

VoErrorCode VoMsgRfc822Entity::setHeaderValue(const char* name, const char* value, const char* srcCharset,
                                              const char* dstCharset) {
  return _changeHeader(
      __func__, [&](VoMsgEntityHeader& header) { return header.setHeaderValue(name, value, srcCharset, dstCharset); });
}

VoErrorCode VoMsgRfc822Entity::setHeaderParameterValue(const char* name, const char* param, const char* value,
                                                       const char* srcCharset, const char* dstCharset) {
  const char* const function = __func__;
  return _changeHeader(function, [&](VoMsgEntityHeader& header) -> VoErrorCode {
    VoMsgHeaderField* const field = (!name || !param) ? nullptr : header.getHeader(name);
    if (field) return field->setParameterValue(param, value, srcCharset, dstCharset);
    return _logged(function, !name || !param ? kVoBadArgument : kVoNoSuchHeader);
  });
}

unsigned VoMsgRfc822Entity::countHeaders() const {
  return guardedOr(0u, [&] { return _header().countHeaders(); });
}

VoMsgHeaderField* VoMsgRfc822Entity::getHeaderAt(unsigned i) const {
  return guardedOr<VoMsgHeaderField*>(nullptr, [&] { return _header().getHeaderAt(i); });
}

VoMsgHeaderField* VoMsgRfc822Entity::getHeader(const char* name) const {
  return guardedOr<VoMsgHeaderField*>(nullptr, [&] { return _header().getHeader(name); });
}

VoErrorCode VoMsgRfc822Entity::appendHeader(VoMsgHeaderField* field) {
  return _changeHeader(__func__, [&](VoMsgEntityHeader& header) { return header.appendHeader(field); });
}

VoErrorCode VoMsgRfc822Entity::insertHeaderAt(VoMsgHeaderField* field, unsigned i) {
  return _changeHeader(__func__, [&](VoMsgEntityHeader& header) { return header.insertHeaderAt(field, i); });
}

VoErrorCode VoMsgRfc822Entity::removeHeaderAt(unsigned i) {
  return _changeHeader(__func__, [&](VoMsgEntityHeader& header) { return header.removeHeaderAt(i); });
}

VoErrorCode VoMsgRfc822Entity::removeHeader(const char* name) {
  return _changeHeader(__func__, [&](VoMsgEntityHeader& header) { return header.removeHeader(name); });
}

VoErrorCode VoMsgRfc822Entity::removeHeaderParameter(const char* name, const char* param) {
  const char* const function = __func__;
  return _changeHeader(function, [&](VoMsgEntityHeader& header) -> VoErrorCode {
    VoMsgHeaderField* const field = (!name || !param) ? nullptr : header.getHeader(name);
    if (field) return field->removeParameter(param);
    return _logged(function, !name || !param ? kVoBadArgument : kVoNoSuchHeader);
  });
}

VoErrorCode VoMsgRfc822Entity::removeHeaderParameterAt(const char* name, unsigned i) {
  const char* const function = __func__;
  return _changeHeader(function, [&](VoMsgEntityHeader& header) -> VoErrorCode {
    VoMsgHeaderField* const field = !name ? nullptr : header.getHeader(name);
    if (field) return field->removeParameterAt(i);
    return _logged(function, !name ? kVoBadArgument : kVoNoSuchHeader);
  });
}

// ---- addresses

unsigned VoMsgRfc822Entity::countUserAddress(const char* name) const {
  return guardedOr(0u, [&] { return name ? _header().countAddress(name) : 0u; });
}

VoMsgUserAddress* VoMsgRfc822Entity::getUserAddressAt(const char* name, unsigned i) const {
  return guardedOr<VoMsgUserAddress*>(nullptr, [&] { return name ? _header().getAddressAt(name, i) : nullptr; });
}

VoErrorCode VoMsgRfc822Entity::appendUserAddress(const char* name, VoMsgUserAddress* address) {
  return _changeHeader(__func__, [&](VoMsgEntityHeader& header) { return header.appendAddress(name, address); });
}

VoErrorCode VoMsgRfc822Entity::appendUserAddress(const char* name, const char* address) {
  return _changeHeader(__func__, [&](VoMsgEntityHeader& header) { return header.appendAddress(name, address); });
}

VoErrorCode VoMsgRfc822Entity::insertUserAddressAt(const char* name, VoMsgUserAddress* address, unsigned i) {
  return _changeHeader(__func__, [&](VoMsgEntityHeader& header) { return header.insertAddressAt(name, address, i); });
}

VoErrorCode VoMsgRfc822Entity::insertUserAddressAt(const char* name, const char* address, unsigned i) {
  return _changeHeader(__func__, [&](VoMsgEntityHeader& header) { return header.insertAddressAt(name, address, i); });
}

VoErrorCode VoMsgRfc822Entity::removeUserAddressAt(const char* name, unsigned i) {
  return _changeHeader(__func__, [&](VoMsgEntityHeader& header) { return header.removeAddressAt(name, i); });
}

// ---- what the content is

// Type and encoding are asked of every entity in a walk, and mostly known without a header block; one that is there
// knows better.
const char* VoMsgRfc822Entity::getContentType() const {
  const auto known = static_cast<CommonValue>(mLayout.declaredType);
  if (!mHeader.getObject() && known != CommonValue::unknown) return textOf(known);
  return getRawHeaderValue("Content-Type");
}
const char* VoMsgRfc822Entity::getCharset() const {
  return getHeaderParameterValue("Content-Type", "charset", "us-ascii");
}
const char* VoMsgRfc822Entity::getEncoding() const {
  const auto known = static_cast<CommonValue>(mLayout.declaredEncoding);
  if (!mHeader.getObject() && known != CommonValue::unknown) return textOf(known);
  return getRawHeaderValue("Content-Transfer-Encoding");
}
// In pieces (RFC 2231) where there is no plain one.
const char* VoMsgRfc822Entity::getBoundary() const {
  const char* const plain = getRawHeaderParameterValue("Content-Type", "boundary");
  return plain ? plain : getHeaderParameterValue("Content-Type", "boundary", "us-ascii");
}

const char* VoMsgRfc822Entity::getFileName(const char* charset) const {
  const char* const name = getHeaderParameterValue("Content-Disposition", "filename", charset);
  return name ? name : getHeaderParameterValue("Content-Type", "name", charset);
}

bool VoMsgRfc822Entity::isMultipartEntity() const { return isContentType("multipart", nullptr); }

VoErrorCode VoMsgRfc822Entity::setFileName(const char* name) {
  const VoErrorCode set = guarded([&]() -> VoErrorCode {
    if (!name) return kVoBadArgument;
    EditUndos undos;
    undos.add(*this);
    VoErrorCode code = kVoSuccess;
    if (!getHeader("Content-Disposition"))
      code = setHeaderValue("Content-Disposition", "attachment", "us-ascii", nullptr);
    if (!voFailed(code)) code = _setParameterIfChanged("Content-Disposition", "filename", name, "utf-8");
    if (!voFailed(code) && getHeader("Content-Type"))
      code = _setParameterIfChanged("Content-Type", "name", name, "utf-8");
    return undos.settle(voFailed(code) ? kVoContentHeaderFailed : code);
  });
  return VO_LOGGED(_getUUIDString(), set);
}

VoErrorCode VoMsgRfc822Entity::setContentType(const char* contentType) {
  return setHeaderValue("Content-Type", contentType, "us-ascii", nullptr);
}

// ---- the tree

VoErrorCode VoMsgRfc822Entity::appendChildEntity(VoMsgEntity* child) {
  const VoErrorCode code = guarded([&] { return _addChild(child, kAtEnd); });
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgRfc822Entity::appendEntity(VoMsgEntity* entity) { return appendChildEntity(entity); }

// A message cannot stand between delimiters as it is, so it gets a part around it. A leaf that was only labelled a
// multipart becomes one with its first child.
VoErrorCode VoMsgRfc822Entity::_addChild(VoMsgEntity* child, unsigned i) {
  if (!child || child == this || child->getParentEntity()) return kVoBadArgument;
  if (child->hasChildEntity())  // else it is not around this entity
    for (const VoMsgEntity* up = this; up; up = up->getParentEntity())
      if (up == child) return kVoBadArgument;
  _header();  // a block that cannot be read now says so, before anything is changed
  const bool wasMultipart = isMultipartEntity() && mLayout.isMultipartBody;
  if (i != kAtEnd && (wasMultipart ? i > 0 && !getChildEntityAt(i - 1) : i > 1)) return kVoOutOfRange;
  EditUndos undos;
  if (!wasMultipart || _declaredBoundary().empty()) undos.add(*this);
  VoErrorCode code = wasMultipart ? _makeMultipartHeader() : _changeSingleToMulti();
  if (!voFailed(code)) code = _separateBoundaries(child, undos);
  code = undos.checked(code);
  if (voFailed(code)) return code;
  VoMsgEntity* added = child;
  if (child->getEntityTypeID() & kVoEntityIsMessage) added = child->createWrapperEntity();
  if (!added) return kVoNoMemory;
  undos.letStand();
  if (auto* const part = dynamic_cast<VoMsgRfc822Entity*>(added))
    part->mLayout.inPlace = false;  // a copy of one that was
  std::uint32_t offset, size;
  const bool hasEpilogue = isEpilogueEntity(mpLastChild, offset, size);  // stands behind all parts, and stays there
  if (hasEpilogue) i = std::min(i, countChildEntity() - 1);
  if (i == kAtEnd || (i == 1 && !hasChildEntity()))
    _appendChild(added);
  else
    _insertChildAt(added, i);
  mLayout.childrenChanged = true;
  return kVoSuccess;
}

VoErrorCode VoMsgRfc822Entity::insertChildEntityAt(VoMsgEntity* child, unsigned i) {
  const VoErrorCode code = guarded([&] { return i == kAtEnd ? kVoOutOfRange : _addChild(child, i); });
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgRfc822Entity::removeChildEntityAt(unsigned i) {
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    // What stands in a leaf, a message or attachments in its text, goes with the content, not by itself.
    if (!isMultipartEntity()) return hasChildEntity() ? kVoOutOfRange : kVoNoChildren;
    const VoMsgEntity* const child = getChildEntityAt(i);
    if (!child) return kVoOutOfRange;
    _noteRemoval(*child);
    return _removeChildAt(i) ? kVoSuccess : kVoOutOfRange;
  });
  return VO_LOGGED(_getUUIDString(), code);
}

// The writer leaves out what the child was read from.
void VoMsgRfc822Entity::_noteRemoval(const VoMsgEntity& child) {
  std::uint32_t offset, size;
  if (const auto* const part = dynamic_cast<const VoMsgRfc822Entity*>(&child); part && part->mLayout.inPlace)
    static_cast<VoMsgMultipartBody*>(_createEntityBody(true))
        ->addRemoved({part->mLayout.headerOffset, static_cast<std::uint32_t>(part->mLayout.bodyEnd()), true});
  else if (isEpilogueEntity(&child, offset, size))
    static_cast<VoMsgMultipartBody*>(_createEntityBody(true))->addRemoved({offset, offset + size, false});
  mLayout.childrenChanged = true;
}

bool VoMsgRfc822Entity::isModified() { return VoMsgEntity::isModified(); }

bool VoMsgRfc822Entity::_isModified() {
  const VoMsgEntityHeader* const header = mHeader.getObject();
  const VoMsgEntityBody* const body = mBody.getObject();
  return mLayout.childrenChanged || (header && header->isEdited()) || (body && body->isNewBody());
}

// ---- the body object

std::string_view VoMsgRfc822Entity::_lineEnd(VoMsgBufferedReader* reader) const {
  const std::uint32_t length = std::min(2u, mLayout.headerSize);
  char last[2];
  if (!reader || !mLayout.hasHeaderRange || length == 0 || !moveTo(*reader, mLayout.headerEnd() - length) ||
      reader->read(last, length) != length)
    return "\r\n";
  const std::string_view bytes(last, length);
  if (!isLineEnd(bytes.back()) || bytes == "\r\n") return "\r\n";
  return bytes.back() == '\r' ? "\r" : "\n";
}

std::string_view VoMsgRfc822Entity::_textLineEnd() const {
  for (const VoMsgEntity* up = this; up; up = up->getParentEntity())
    if (const auto* const mime = dynamic_cast<const VoMsgRfc822Entity*>(up))
      if (MessageSource* const source = mime->mMessageSource.getObject()) return source->lineEnd();
  return "\r\n";
}

VoMsgEntityBody* VoMsgRfc822Entity::_body() const {
  if (VoMsgEntityBody* const body = mBody.getObject()) return body;
  std::unique_ptr<VoMsgEntityBody> body;
  if (mLayout.isMultipartBody)
    body = std::make_unique<VoMsgMultipartBody>();
  else
    body = std::make_unique<VoMsgSingleBody>();
  body->setBodyRange(static_cast<std::int32_t>(mLayout.bodyOffset), static_cast<std::int32_t>(mLayout.bodySize));
  return mBody.adopt(std::move(body));
}

VoMsgSingleBody* VoMsgRfc822Entity::_singleBody() const {
  VoMsgEntityBody* const body = _body();
  return body->isMultipart() ? nullptr : static_cast<VoMsgSingleBody*>(body);
}

VoMsgEntityBody* VoMsgRfc822Entity::_createEntityBody(bool multipart) {
  VoMsgEntityBody* const present = mBody.getObject();
  if (present && mBody.countReference() == 1 && present->isMultipart() == multipart) return present;
  std::unique_ptr<VoMsgEntityBody> body;
  if (multipart) {
    auto parts = std::make_unique<VoMsgMultipartBody>();
    if (present && present->isMultipart()) {
      const auto& old = static_cast<const VoMsgMultipartBody&>(*present);
      for (const VoMsgMultipartBody::Range& range : old.getRemoved()) parts->addRemoved(range);
      if (old.isNewBody()) parts->setNewBody();
    }
    body = std::move(parts);
  } else {
    body = std::make_unique<VoMsgSingleBody>();
  }
  body->setBodyRange(static_cast<std::int32_t>(mLayout.bodyOffset), static_cast<std::int32_t>(mLayout.bodySize));
  VoMsgEntityBody* const made = mBody.adopt(std::move(body));
  mLayout.isMultipartBody = multipart;
  return made;
}

VoMsgBufferedReader* VoMsgRfc822Entity::getContextSource(int& err) {
  MessageSource* const source = mMessageSource.getObject();
  auto* const reader =
      guardedOr<VoMsgBufferedReader*>(nullptr, [source] { return source ? source->openReader() : nullptr; });
  err = static_cast<int>(source && !reader ? kVoReadFailed : kVoSuccess);
  return reader;
}

// Becomes a copy of one entity: the header block is copied, body and source are shared.
VoErrorCode VoMsgRfc822Entity::copy(VoMsgEntity* from) {
  return guarded([&]() -> VoErrorCode {
    const auto* const other = dynamic_cast<VoMsgRfc822Entity*>(from);
    if (!other) return kVoBadArgument;
    if (const VoMsgEntityHeader* const block = other->mHeader.getObject()) {
      std::unique_ptr<VoMsgEntityHeader> header(block->newCopy());
      if (!header) return kVoNoMemory;
      mHeader.adopt(std::move(header));
    } else {
      mHeader.free();
    }
    noteTreeChange();
    mBody = other->mBody;
    mMessageSource = other->mMessageSource;
    mLayout = other->mLayout;
    return kVoSuccess;
  });
}

void VoMsgRfc822Entity::dumpEntityInf(std::FILE* out) {
  if (!out) return;
  guardedOr(0, [&] {
    _dumpEntityInf(out);
    _header().dumpEntityHeader(out);
    _body()->dumpEntityBody(out);
    return 0;
  });
}

// ---- steps that the message drives

// Reads the body at the source's position, up to the next delimiter of a multipart around this entity.
VoErrorCode VoMsgRfc822Entity::_readBodyPart(VoMsgBoundaryType& end) {
  end = kVoBoundaryNone;
  return guarded([&]() -> VoErrorCode {
    int err = 0;
    VoMsgBufferedReader* const reader = getContextSource(err);
    if (!reader) return kVoReadFailed;
    std::vector<const char*> around;
    for (const VoMsgEntity* up = getParentEntity(); up; up = up->getParentEntity())
      if (const auto* const part = dynamic_cast<const VoMsgRfc822Entity*>(up); part && part->isMultipartEntity())
        if (const char* const boundary = part->getBoundary()) around.push_back(boundary);
    BoundaryTable boundaries;
    for (auto boundary = around.rbegin(); boundary != around.rend(); ++boundary) boundaries.push(*boundary);
    const std::uint32_t offset = reader->getOffset();
    const BodyEnd found = findBodyEnd(*reader, boundaries);
    end = found.match.type;
    mLayout.bodyOffset = offset;
    mLayout.bodySize = static_cast<std::uint32_t>(found.lineOffset - found.terminatorBefore) - offset;
    mLayout.hasBodyRange = true;
    mBody.free();
    return kVoSuccess;
  });
}

VoErrorCode VoMsgRfc822Entity::_writeBoundarySeparator(VoMsgBufferedWriter* writer, bool first) {
  if (!writer) return VO_LOGGED(_getUUIDString(), kVoBadArgument);
  const std::string_view boundary = viewOf(getBoundary());
  const bool written = (first || writer->write("\r\n", 2)) && writer->write("--", 2) &&
                       writer->write(boundary.data(), static_cast<unsigned>(boundary.size()));
  return written ? kVoSuccess : kVoWriteFailed;
}

VoErrorCode VoMsgRfc822Entity::_writeBoundaryBegin(VoMsgBufferedWriter* writer) {
  const VoErrorCode code = _writeBoundarySeparator(writer, false);
  return voFailed(code) || writer->write("\r\n", 2) ? code : kVoWriteFailed;
}

VoErrorCode VoMsgRfc822Entity::_writeBoundaryEnd(VoMsgBufferedWriter* writer) {
  const VoErrorCode code = _writeBoundarySeparator(writer, false);
  return voFailed(code) || writer->write("--\r\n", 4) ? code : kVoWriteFailed;
}

VoErrorCode VoMsgRfc822Entity::_writeToResource(VoMsgBufferedWriter* writer) {
  if (!writer) return VO_LOGGED(_getUUIDString(), kVoBadArgument);
  return guarded([&]() -> VoErrorCode {
    const VoErrorCode code = MessageWriter(*writer).write(*this);
    return voFailed(code) || writer->flush() ? code : kVoWriteFailed;
  });
}
