// The tree is walked with an explicit stack, for an edit may sit a hundred thousand levels deep. The source of a
// multipart's body is a sequence of gaps and parts: a gap holds the line end and the delimiter line before a part, the
// first one also the preamble, the last one the close delimiter and the epilogue. Unchanged parts and gaps are copied.
// A part that was added brings its own delimiter line; one that was removed takes the delimiter line before it along.

#include "vomsg/entity/VoMsgMessageWriter.h"

#include <algorithm>
#include <utility>

#include "vomsg/encoding/VoMsgTransferEncoding.h"
#include "vomsg/entity/VoMsgBodyScanner.h"
#include "vomsg/entity/VoMsgEntityInside.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/entity/VoMsgSingleBody.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/header/VoMsgHeaderSurvey.h"

namespace vomsg::detail {

namespace {

constexpr char kLogSource[] = "VoMsgRfc822Message";

// Embedded attachments found behind the close delimiter are part of the last gap.
bool isBehindParts(const VoMsgEntity& entity) { return entity.getEntityTypeID() == kVoEntityMultiEmbeded; }

}  // namespace

VoErrorCode MessageWriter::write(VoMsgRfc822Entity& root) {
  findChanges(root);
  VoErrorCode code = begin(root, layoutOf(root).hasHeaderRange && !layoutOf(root).inPlace);
  while (!voFailed(code) && !mOpen.empty()) {
    OpenMultipart& open = mOpen.back();
    if (open.current) {
      code = afterChild(open);
      continue;
    }
    for (; open.next && isBehindParts(*open.next); open.next = open.next->getNextSiblingEntity())
      if (mEdited.contains(open.next)) open.behind = open.next;
    if (!open.next) {
      code = afterLastChild(open);
      mOpen.pop_back();
      continue;
    }
    auto* const child = dynamic_cast<VoMsgRfc822Entity*>(open.next);
    open.next = open.next->getNextSiblingEntity();
    if (!child) continue;
    open.current = child;
    code = beforeChild(open, *child);
    if (!voFailed(code)) code = begin(*child, false);
  }
  mSources.clear();
  return code;
}

// A caller's change reaches up to the root. A parser's mark reaches up to its own message only: what lies around a
// nested message that nobody edited is not touched for its sake.
void MessageWriter::findChanges(VoMsgRfc822Entity& root) {
  mAnew.clear();
  mEdited.clear();
  VoMsgEntityIterator walk(&root);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next()) {
    const auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity);
    if ((mime && !layoutOf(*mime).hasHeaderRange) || entity->_isModified()) {
      for (VoMsgEntity* up = entity; mEdited.insert(up).second && up != &root; up = up->getParentEntity())
        mAnew.insert(up);
      mAnew.insert(&root);
    } else if (mime && layoutOf(*mime).isMarked) {
      for (VoMsgEntity* up = entity; mAnew.insert(up).second && up != &root; up = up->getParentEntity())
        if (up->getEntityTypeID() & kVoEntityIsMessage) break;
    }
  }
}

VoErrorCode MessageWriter::begin(VoMsgRfc822Entity& entity, bool wholeSource) {
  if (Inside::source(entity).getObject() && !readerOf(entity)) return kVoReadFailed;
  VoMsgBufferedReader* const reader = readerOf(entity);
  const std::uint64_t end = !layoutOf(entity).hasBodyRange ? 0
                            : wholeSource && reader        ? reader->getSize()
                                                           : layoutOf(entity).bodyEnd();
  if (isUnchanged(entity)) return copySource(entity, layoutOf(entity).headerOffset, end);
  Inside::readHeader(entity);  // without it there would be no boundary, and nobody would know
  const VoErrorCode code = writeHeader(entity);
  if (voFailed(code)) return code;
  if (!layoutOf(entity).isMultipartBody) return writeLeaf(entity, end);
  return openMultipart(entity, end);
}

VoErrorCode MessageWriter::writeHeader(VoMsgRfc822Entity& entity) {
  const VoMsgEntity* const child = layoutOf(entity).isMultipartBody ? nullptr : entity.getChildEntity();
  if (child && child->getEntityTypeID() == kVoEntityTnefMessage && mEdited.contains(child) &&
      encodingForChild(entity, *child) != transferEncodingOf(entity.getEncoding())) {
    const std::unique_ptr<VoMsgEntityHeader> header(Inside::readHeader(entity).newCopy());
    if (!header) return kVoNoMemory;
    header->removeHeader("Content-Transfer-Encoding");
    auto field = std::make_unique<VoMsgHeaderField>("Content-Transfer-Encoding", "base64");
    const VoErrorCode code = header->appendHeader(field.get());
    if (voFailed(code)) return code;
    field.release();
    mLineIsEnded = true;
    return header->writeNewHeaderPart(&mOut);
  }
  const VoMsgEntityHeader* const header = Inside::header(entity).getObject();
  if ((header && header->isEdited()) || layoutOf(entity).isMarked || !layoutOf(entity).hasHeaderRange) {
    mLineIsEnded = true;
    return Inside::readHeader(entity).writeNewHeaderPart(&mOut);
  }
  const VoErrorCode code = copySource(entity, layoutOf(entity).headerOffset, layoutOf(entity).headerEnd());
  const bool getsBody = Inside::body(entity).getObject() && Inside::body(entity).getObject()->isNewBody();
  if (voFailed(code) || !layoutOf(entity).unterminatedHeader || !(getsBody || layoutOf(entity).childrenChanged))
    return code;
  // A new body needs the empty line that the block never had.
  const std::uint64_t blockEnd = layoutOf(entity).headerEnd();
  const std::string last = layoutOf(entity).headerSize ? sourceBytes(entity, blockEnd - 1, blockEnd) : std::string();
  const VoErrorCode ended = last.empty() || isLineEnd(last[0]) ? kVoSuccess : put(lineEndOf(entity));
  return voFailed(ended) ? ended : put(lineEndOf(entity));
}

VoErrorCode MessageWriter::writeLeaf(VoMsgRfc822Entity& entity, std::uint64_t end) {
  const VoMsgEntityBody* const body = Inside::body(entity).getObject();
  // A part made around a message has no bytes but the message's.
  if (VoMsgEntity* const child = entity.getChildEntity();
      child && (mEdited.contains(child) || !layoutOf(entity).hasBodyRange))
    return writeChild(entity, *child);
  if (body && body->isNewBody()) {
    const VoMsgResourceLocator* const content = static_cast<const VoMsgSingleBody*>(body)->getNewContent();
    const unsigned size = content ? content->getSize(VoMsgResourceLocator::dataPart) : 0;
    if (size == 0) return kVoSuccess;
    const std::unique_ptr<VoMsgBufferedReader> reader(content->getInputStream(VoMsgResourceLocator::dataPart));
    if (!reader) return kVoReadFailed;
    const VoErrorCode code = copyRange(*reader, mOut, 0, size);
    char last = '\0';
    if (!voFailed(code) && moveTo(*reader, size - 1) && reader->read(&last, 1) == 1) mEndsInCr = last == '\r';
    mLineIsEnded = false;  // a line end at the end of the content is content
    return code;
  }
  return layoutOf(entity).hasBodyRange ? copySource(entity, layoutOf(entity).bodyOffset, end) : kVoSuccess;
}

// TNEF is binary, so a part that declares no encoding, or 7bit, gets base64.
TransferEncoding MessageWriter::encodingForChild(const VoMsgRfc822Entity& entity, const VoMsgEntity& child) {
  const char* const declared = entity.getEncoding();
  if (child.getEntityTypeID() == kVoEntityTnefMessage && (!declared || !*declared || equalNoCase(declared, "7bit")))
    return TransferEncoding::base64;
  return transferEncodingOf(declared);
}

// A nested message, a TNEF stream or a text with attachments in it that a caller changed or added is written afresh
// and encoded as its part declares.
VoErrorCode MessageWriter::writeChild(VoMsgRfc822Entity& entity, VoMsgEntity& child) {
  const TransferEncoding encoding = encodingForChild(entity, child);
  mLineIsEnded = false;
  if (encoding == TransferEncoding::identity) return child._writeToResource(&mOut);
  const std::unique_ptr<VoMsgResourceLocator> content = temporaryResource(layoutOf(entity).bodySize);
  if (!content) return kVoNoMemory;
  {
    const std::unique_ptr<VoMsgBufferedWriter> writer(content->getOutputStream(VoMsgResourceLocator::dataPart));
    if (!writer) return kVoWriteFailed;
    const VoErrorCode code = child._writeToResource(writer.get());
    if (voFailed(code)) return code;
    if (!writer->flush()) return kVoWriteFailed;
  }
  const bool isTnef = child.getEntityTypeID() == kVoEntityTnefMessage;
  const VoErrorCode code = encodeTransfer(encoding, mOut, *content, entity.getFileName("utf-8"),
                                          isTnef ? std::string_view() : lineEndOf(entity), Inside::textLineEnd(entity));
  if (voFailed(code)) VO_LOG(1, entity._getUUIDString(), "The function replaceContent failed.");
  return code;
}

// ---- multiparts

VoErrorCode MessageWriter::openMultipart(VoMsgRfc822Entity& entity, std::uint64_t end) {
  OpenMultipart open{};
  open.entity = &entity;
  open.next = entity.getChildEntity();
  const VoMsgEntityBody* const body = Inside::body(entity).getObject();
  open.isNew = !layoutOf(entity).hasBodyRange || (body && body->isNewBody());
  open.position = layoutOf(entity).bodyOffset;
  open.end = end;
  open.lineEnd = lineEndOf(entity);
  open.boundary = viewOf(entity.getBoundary());
  open.sourceBoundary = open.isNew ? open.boundary : sourceBoundaryOf(entity);
  if (const MessageSource* const source = Inside::source(entity).getObject();
      source && (source->options() & kVoOptionReadOn))  // read as if it had no blanks at its end
    for (std::string* const boundary : {&open.boundary, &open.sourceBoundary})
      boundary->erase(boundary->find_last_not_of(" \t") + 1);
  if (open.isNew && body && body->isMultipart())
    open.close = static_cast<const VoMsgMultipartBody*>(body)->getPreamble();
  if (!open.isNew && body && body->isMultipart()) {
    open.removed = static_cast<const VoMsgMultipartBody*>(body)->getRemoved();
    std::sort(open.removed.begin(), open.removed.end(), [](const auto& a, const auto& b) { return a.begin < b.begin; });
  }
  for (const VoMsgEntity* child = open.next; child && !open.firstInPlace; child = child->getNextSiblingEntity())
    if (const auto* const part = dynamic_cast<const VoMsgRfc822Entity*>(child); part && layoutOf(*part).inPlace)
      open.firstInPlace = part;
  VoErrorCode code = kVoSuccess;
  if (open.isNew) {
    if (!open.close.empty()) open.close += open.lineEnd;
    code = put(open.close);
    open.close = "--" + open.boundary + "--";
    open.close += open.lineEnd;
  }
  mOpen.push_back(std::move(open));
  return code;
}

VoErrorCode MessageWriter::beforeChild(OpenMultipart& open, VoMsgRfc822Entity& child) {
  if (!open.isNew && layoutOf(child).inPlace) return copyToPart(open, child, isUnchanged(child));
  std::string delimiter = "--" + open.boundary;
  delimiter += open.lineEnd;
  if (open.isNew) return put(delimiter);
  if (open.seenInPlace) return put(std::string(open.lineEnd) + delimiter);
  // A part added before the first one stands behind the delimiter line that is there.
  if (open.firstInPlace) return copyToPart(open, *open.firstInPlace, false);
  const VoErrorCode code = gotoInsertionPoint(open);
  return voFailed(code) ? code : put(delimiter);
}

// Copies the source up to a part that lies in it. A delimiter line that ended with the data gets its line end when
// something follows now.
VoErrorCode MessageWriter::copyToPart(OpenMultipart& open, const VoMsgRfc822Entity& part, bool isLast) {
  const std::uint64_t begin = layoutOf(part).headerOffset;
  const VoErrorCode code = copyGap(open, begin);
  if (voFailed(code) || isLast || begin == 0) return code;
  const std::string last = sourceBytes(*open.entity, begin - 1, begin);
  return last.empty() || isLineEnd(last[0]) ? code : put(open.lineEnd);
}

VoErrorCode MessageWriter::afterChild(OpenMultipart& open) {
  VoMsgRfc822Entity& child = *open.current;
  open.current = nullptr;
  if (open.isNew) return put(open.lineEnd);
  if (layoutOf(child).inPlace) {
    open.seenInPlace = true;
    open.position = layoutOf(child).bodyEnd();
  }
  if (open.seenInPlace) return kVoSuccess;  // what follows brings its line end
  if (!open.next && open.position >= open.end && open.close.empty()) return kVoSuccess;  // as does what is around
  const VoErrorCode code = put(open.lineEnd);
  if (voFailed(code) || !open.firstInPlace) return code;
  std::string delimiter = "--" + open.boundary;
  delimiter += open.lineEnd;
  return put(delimiter);
}

// The source may have no line end between an empty part and the next delimiter; what is written there now needs one.
VoErrorCode MessageWriter::separate(OpenMultipart& open) {
  if (mLineIsEnded || open.position >= open.end) return kVoSuccess;
  const std::string next = sourceBytes(*open.entity, open.position, open.position + 1);
  if (next == "\n" && mEndsInCr) return put("\r");
  return next.empty() || isLineEnd(next[0]) ? kVoSuccess : put(open.lineEnd);
}

VoErrorCode MessageWriter::afterLastChild(OpenMultipart& open) {
  VoErrorCode code = kVoSuccess;
  std::uint32_t offset, size;
  if (!open.isNew && open.behind && isEpilogueEntity(open.behind, offset, size)) {
    code = copyGap(open, offset);
    if (!voFailed(code)) code = open.behind->_writeToResource(&mOut);
    open.position = std::uint64_t{offset} + size;
  }
  if (!voFailed(code) && !open.isNew) code = copyLastGap(open);
  return voFailed(code) ? code : put(open.close);
}

// Where parts go when none of the source is left: where the removed ones were, before the close delimiter, or at the
// end of a body that has no delimiter at all.
VoErrorCode MessageWriter::gotoInsertionPoint(OpenMultipart& open) {
  if (open.position != layoutOf(*open.entity).bodyOffset || !open.close.empty()) return kVoSuccess;  // there already
  VoMsgBufferedReader* const reader = readerOf(*open.entity);
  if (!reader) return kVoReadFailed;
  const auto removed = std::find_if(open.removed.rbegin(), open.removed.rend(), [](const auto& r) { return r.isPart; });
  if (removed != open.removed.rend()) return copyGap(open, behindLineEnd(open, removed->end));
  BoundaryTable boundaries;
  boundaries.push(open.sourceBoundary);
  BodyEnd end;
  if (open.position < open.end) {
    if (!moveTo(*reader, open.position)) return kVoReadFailed;
    end = findBodyEnd(*reader, boundaries);
  }
  if (end.match.type != kVoBoundaryNone && end.lineOffset < open.end) return copyGap(open, end.lineOffset);
  open.close = "--" + open.boundary + "--";
  open.close += open.lineEnd;
  const VoErrorCode code = copyGap(open, open.end);
  if (voFailed(code) || open.end == layoutOf(*open.entity).bodyOffset) return code;
  const std::string last = sourceBytes(*open.entity, open.end - 1, open.end);
  return !last.empty() && isLineEnd(last[0]) ? kVoSuccess : put(open.lineEnd);
}

// ---- the source around the parts

// Copies from the multipart's position to `end`, less what belonged to removed parts.
VoErrorCode MessageWriter::copyGap(OpenMultipart& open, std::uint64_t end) {
  VoErrorCode code = separate(open);
  for (; open.nextRemoved < open.removed.size() && open.removed[open.nextRemoved].end <= end; ++open.nextRemoved) {
    const VoMsgMultipartBody::Range& range = open.removed[open.nextRemoved];
    const std::uint64_t from = std::max<std::uint64_t>(open.position, range.begin);
    const std::uint64_t until = range.isPart ? delimiterBefore(open, from) : from;
    if (!voFailed(code)) code = copyDelimiters(open, open.position, until);
    if (voFailed(code)) return code;
    open.position = range.isPart ? std::min(end, behindLineEnd(open, range.end)) : range.end;
  }
  if (voFailed(code)) return code;
  code = copyDelimiters(open, open.position, end);
  open.position = std::max(open.position, end);
  return code;
}

// Where parts were removed and no delimiter follows, the line end before theirs goes too: the part that is the last one
// now ends as the removed one did.
VoErrorCode MessageWriter::copyLastGap(OpenMultipart& open) {
  const std::size_t next = open.nextRemoved;
  if (next < open.removed.size() && open.removed.back().isPart && open.removed.back().end >= open.end) {
    std::uint64_t until = delimiterBefore(open, std::max<std::uint64_t>(open.position, open.removed[next].begin));
    until -= lineEndBefore(open, until);
    const VoErrorCode code = until > open.position ? separate(open) : kVoSuccess;
    if (voFailed(code)) return code;
    open.nextRemoved = open.removed.size();
    return copyDelimiters(open, std::exchange(open.position, open.end), until);
  }
  return copyGap(open, open.end);
}

// Copies [begin, end) of the source; where a caller changed the boundary, with the delimiter lines of the new one.
VoErrorCode MessageWriter::copyDelimiters(OpenMultipart& open, std::uint64_t begin, std::uint64_t end) {
  if (open.boundary == open.sourceBoundary || open.sourceBoundary.empty() || open.boundary.empty() || begin >= end)
    return begin < end ? copySource(*open.entity, begin, end) : kVoSuccess;
  BoundaryTable boundaries;
  boundaries.push(open.sourceBoundary);
  VoMsgBufferedReader* const reader = readerOf(*open.entity);
  while (begin < end) {
    if (!reader || !moveTo(*reader, begin)) return kVoReadFailed;
    const BodyEnd found = findBodyEnd(*reader, boundaries);
    if (found.match.type == kVoBoundaryNone || found.lineOffset >= end) break;
    const bool isClose = found.match.type == kVoBoundaryClose;
    std::string line = "--" + open.boundary;
    if (isClose) line += "--";
    const std::string old = sourceBytes(*open.entity, found.lineOffset, found.lineEnd);
    line += old.substr(std::min(old.size(), old.find_first_of("\r\n")));
    VoErrorCode code = copySource(*open.entity, begin, found.lineOffset);
    if (!voFailed(code)) code = put(line);
    if (voFailed(code)) return code;
    begin = found.lineEnd;
    if (isClose) break;  // behind it the boundary means nothing
  }
  return begin < end ? copySource(*open.entity, begin, end) : kVoSuccess;
}

// The start of the line whose line end stands right before `offset`.
std::uint64_t MessageWriter::delimiterBefore(OpenMultipart& open, std::uint64_t offset) {
  constexpr std::uint64_t kStep = 4096;
  const std::uint64_t floor = open.position;
  offset -= lineEndBefore(open, offset);
  while (offset > floor) {
    const std::uint64_t begin = offset - std::min(kStep, offset - floor);
    const std::string bytes = sourceBytes(*open.entity, begin, offset);
    const std::size_t at = bytes.find_last_of("\r\n");
    if (at != bytes.npos) return begin + at + 1;
    offset = begin;
  }
  return floor;
}

// The bytes of the line end right before `offset`, as far as they were not written yet.
std::uint64_t MessageWriter::lineEndBefore(OpenMultipart& open, std::uint64_t offset) {
  const std::uint64_t length = std::min<std::uint64_t>(2, offset - open.position);
  const std::string tail = sourceBytes(*open.entity, offset - length, offset);
  if (tail.empty() || !isLineEnd(tail.back())) return 0;
  return tail == "\r\n" ? 2 : 1;
}

std::uint64_t MessageWriter::behindLineEnd(OpenMultipart& open, std::uint64_t offset) {
  const std::string bytes = sourceBytes(*open.entity, offset, std::min(open.end, offset + 2));
  if (bytes.empty() || !isLineEnd(bytes[0])) return offset;
  return offset + (bytes == "\r\n" ? 2 : 1);
}

// ---- streams

VoMsgBufferedReader* MessageWriter::readerOf(const VoMsgRfc822Entity& entity) {
  MessageSource* const source = Inside::source(entity).getObject();
  if (!source) return nullptr;
  std::unique_ptr<OpenSource>& opened = mSources[source];
  if (!opened) opened = std::make_unique<OpenSource>(source);
  return opened->reader();
}

VoErrorCode MessageWriter::copySource(const VoMsgRfc822Entity& entity, std::uint64_t begin, std::uint64_t end) {
  if (begin >= end) return kVoSuccess;
  VoMsgBufferedReader* const reader = readerOf(entity);
  if (!reader) return kVoReadFailed;
  // Wherever the source has no line end before a delimiter, it ends the line before in another way.
  mLineIsEnded = true;
  mEndsInCr = false;
  return copyRange(*reader, mOut, begin, end - begin);
}

VoErrorCode MessageWriter::put(std::string_view text) {
  if (text.empty()) return kVoSuccess;
  if (mEndsInCr && text.front() == '\n' && !mOut.write("\r", 1)) return kVoWriteFailed;
  mEndsInCr = false;
  mLineIsEnded = isLineEnd(text.back());
  return mOut.write(text.data(), static_cast<unsigned>(text.size())) ? kVoSuccess : kVoWriteFailed;
}

std::string MessageWriter::sourceBytes(const VoMsgRfc822Entity& entity, std::uint64_t begin, std::uint64_t end) {
  VoMsgBufferedReader* const reader = readerOf(entity);
  if (!reader || begin >= end || !moveTo(*reader, begin)) return {};
  std::string bytes(static_cast<std::size_t>(end - begin), '\0');
  bytes.resize(reader->read(bytes.data(), static_cast<unsigned>(bytes.size())));
  return bytes;
}

std::string_view MessageWriter::lineEndOf(const VoMsgRfc822Entity& entity) {
  return Inside::lineEnd(entity, readerOf(entity));
}

// The boundary that the delimiter lines of the source carry.
std::string MessageWriter::sourceBoundaryOf(const VoMsgRfc822Entity& entity) {
  const VoMsgEntityHeader* const header = Inside::header(entity).getObject();
  if (!header || !header->isEdited()) return std::string(viewOf(entity.getBoundary()));
  std::string block = sourceBytes(entity, layoutOf(entity).headerOffset, layoutOf(entity).headerEnd());
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // part of the block only where a message is read on
  if ((Inside::source(entity).getObject()->options() & kVoOptionReadOn) && block.starts_with(kByteOrderMark))
    block.erase(0, kByteOrderMark.size());
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(block.data()), static_cast<unsigned>(block.size()));
  HeaderSurvey survey;
  if (reader.open()) surveyHeaderBlock(survey, reader, layoutOf(entity).isChildHeader, nullptr);
  std::string boundary;
  if (survey.hasContentType) findBoundary(survey.contentType, boundary);
  return boundary;
}

}  // namespace vomsg::detail
