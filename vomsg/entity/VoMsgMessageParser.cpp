// The loop in proceed() is the whole story: read a header block (_parseEntity), look for the next delimiter of any
// multipart in force, give the body that ends there to its entity, close the multiparts that the delimiter ends, and
// start the next part. The depth at which the delimiter matched says how many multiparts it ends.

#include "vomsg/entity/VoMsgMessageParser.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "vomsg/encoding/VoMsgTransferEncoding.h"
#include "vomsg/entity/VoMsgBodyScanner.h"
#include "vomsg/entity/VoMsgCommonValue.h"
#include "vomsg/entity/VoMsgEntityInside.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgMailMessage.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgRangeResource.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

constexpr char kLogSource[] = "VoMsgRfc822Entity";

bool isEmlName(std::string_view name) { return name.size() >= 5 && endsWithNoCase(name, ".eml"); }
bool isTnefName(std::string_view name) { return equalNoCase(name, "winmail.dat"); }

// What a multipart, or a part with a message in it, hands down for 8-bit names in the blocks below.
std::string_view inheritedCharset(std::string_view declared) {
  return equalNoCase(declared, "us-ascii") ? std::string_view() : declared;
}

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view withoutTrailingBlanks(std::string_view boundary) {
  return boundary.substr(0, boundary.find_last_not_of(" \t") + 1);
}

// Puts the reader back where it stood, whatever looked at the source meanwhile.
class PositionKeeper {
 public:
  explicit PositionKeeper(VoMsgBufferedReader& reader) : mReader(reader), mOffset(reader.getOffset()) {}
  ~PositionKeeper() { moveTo(mReader, mOffset); }
  PositionKeeper(const PositionKeeper&) = delete;
  PositionKeeper& operator=(const PositionKeeper&) = delete;

 private:
  VoMsgBufferedReader& mReader;
  std::uint64_t mOffset;
};

}  // namespace

MessageParser::MessageParser(VoMsgRfc822Entity& root, const MessagePlace& place,
                             const VoObjectStub<MessageSource>& source, HeaderSurvey& survey)
    : mRoot(root),
      mSource(source),
      mReader(*source.getObject()->openReader()),
      mSize(mReader.get().getSize()),
      mTag(place.tag),
      mRootLevel(static_cast<int>(place.level)),
      // The tree's root is not counted, so its parts are on its own level.
      mPartLevel(mRootLevel + (root.getParentEntity() ? 1 : 0)),
      mSurvey(survey) {
  const auto* const part = dynamic_cast<VoMsgRfc822Entity*>(root.getParentEntity());
  if (part && Inside::header(*part).getObject()) mRootCharset = inheritedCharset(viewOf(part->getCharset()));
}

// ---- the course of a parse

void MessageParser::start() {
  mCode = guarded([&] { return proceed(_parseEntity(mRoot)); });
}

NestedMessage MessageParser::takeNested() {
  mIsNestedTaken = true;
  return std::exchange(mNested, {});
}

// What mail is made of, well or badly, as against what was refused.
VoErrorCode MessageParser::endsReading(VoErrorCode code) {
  if (!voFailed(code) || !readsOn() || mShortage.seen()) return code;
  if (!voFailed(mFirstCode)) mFirstCode = code;
  return kVoSuccess;
}

// A nested message that failed goes, and the message around it fails with its code; or it stays, and so does what
// stands behind it.
void MessageParser::resume(VoErrorCode nestedCode) {
  mIsNestedTaken = false;
  mCode = guarded([&] {
    VoErrorCode code = wake();
    if (!voFailed(code)) code = endsReading(nestedCode);
    if (voFailed(code)) TreeAccess::removeAt(mNestedPart, 0);
    voMessageLog(9, kLogSource, "_parseRfc822Message", __LINE__, mTag, "end  : _parseRfc822Message");
    return voFailed(code) ? code : proceed(passDelimiter());
  });
}

void MessageParser::suspend() {
  mSuspendedAt = mReader.get().getOffset();
  mIsSuspended = true;
  mSource.getObject()->closeReader();
}

VoErrorCode MessageParser::wake() {
  if (!std::exchange(mIsSuspended, false)) return kVoSuccess;
  VoMsgBufferedReader* const reader = mSource.getObject()->openReader();
  if (!reader) return kVoReadFailed;
  mReader = *reader;
  return moveTo(*reader, mSuspendedAt) ? kVoSuccess : kVoReadFailed;
}

VoErrorCode MessageParser::conclude() {
  // Whatever step went on without what was refused: its answer is not to be trusted.
  if (!voFailed(mCode) && mShortage.seen()) mCode = mShortage.code();
  if (voFailed(mCode)) giveUp();
  if (voFailed(mCode) || !voFailed(mFirstCode)) return mCode;
  unmark();
  return mFirstCode;
}

// Goes on from the start of a body or of what follows a delimiter line.
VoErrorCode MessageParser::proceed(VoErrorCode code) {
  while (!voFailed(code) && !mIsRead) {
    mEnd = findBodyEnd(mReader, mBoundaries);
    // Right behind a close delimiter, the line end before this line is the close delimiter's own.
    const bool noEpilogue = mEnd.match.type != kVoBoundaryNone && !mOpen.empty() && mOpen.back().inEpilogue &&
                            mEnd.lineOffset == mOpen.back().epilogueOffset;
    mBodyEnd = mEnd.lineOffset - (noEpilogue ? mOpen.back().closeTerminator : mEnd.terminatorBefore);
    code = _parseSingleBody(mBodyEnd);
    if (voFailed(code) || isWaiting()) return code;
    code = passDelimiter();
  }
  return code;
}

// Closes the multiparts that the delimiter behind the body ends, and starts what it starts.
VoErrorCode MessageParser::passDelimiter() {
  if (mEnd.match.type == kVoBoundaryNone) {
    mIsRead = true;
    return closeAll(mEnd.lineOffset);
  }
  VoErrorCode code = kVoSuccess;
  while (!voFailed(code) && mOpen.size() > mEnd.match.depth + 1) code = closeInnermost(mBodyEnd);
  if (!voFailed(code) && mShortage.seen()) code = mShortage.code();
  if (voFailed(code)) return code;
  if (mEnd.match.type == kVoBoundaryClose) {
    mBoundaries.pop();
    mOpen.back().inEpilogue = true;
    mOpen.back().epilogueOffset = static_cast<std::uint32_t>(mEnd.lineEnd);
    mOpen.back().closeTerminator = mEnd.terminator;
    return kVoSuccess;
  }
  auto child = std::make_unique<VoMsgMimeEntity>();
  VoMsgMimeEntity& entity = *child;
  TreeAccess::append(mOpen.back().entity, child.release());
  layoutOf(entity).inPlace = true;
  return _parseEntity(entity);
}

void MessageParser::giveUp() {
  // What was not read belongs to whatever was open, so that nothing of the source is lost when it is written.
  if (mUnread == &mRoot) {
    mSurvey = {};
    layoutOf(mRoot) = surveyedLayout(layoutOf(mRoot), mRoot.getParentEntity() != nullptr);
    mLeaf = &mRoot;
  } else if (mUnread) {
    VoMsgEntity* const parent = mUnread->getParentEntity();
    TreeAccess::removeAt(parent, parent->countChildEntity() - 1);
  }
  if (mLeaf) layoutOf(*mLeaf).endBodyAt(mSize);
  // No epilogue is looked through any more.
  for (OpenMultipart& open : mOpen) open.inEpilogue = false;
  closeAll(mSize);
  unmark();
}

void MessageParser::unmark() {
  // A message that was not understood is not corrected either: unedited, it comes out as it came in.
  VoMsgEntityIterator walk(&mRoot);
  for (VoMsgEntity* entity = walk.first(); entity; entity = walk.next())
    if (auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity))
      layoutOf(*mime).isMarked = layoutOf(*mime).subtreeMarked = false;
}

// Reads the header block of `entity` and decides what its body is: parts to come, or a leaf.
VoErrorCode MessageParser::_parseEntity(VoMsgRfc822Entity& entity) {
  mUnread = &entity;
  const bool isChild = entity.getParentEntity() != nullptr;
  if (&entity == &mRoot && readsOn())
    surveyRoot();
  else
    surveyHeaderBlock(mSurvey, mReader, isChild, mBoundaries.empty() ? nullptr : &mBoundaries);
  Inside::source(entity) = mSource;
  layoutOf(entity) = surveyedLayout(layoutOf(entity), isChild);
  mUnread = nullptr;
  mLeaf = &entity;
  mPlan = {};
  bool multipart = false;
  const VoErrorCode code = _isMalformedMessage(entity, multipart);
  if (voFailed(code)) return code;
  if (mSurvey.end == HeaderEnd::boundaryLine || mSurvey.end == HeaderEnd::endOfData) {  // no body
    layoutOf(entity).isMultipartBody = multipart;
    if (multipart) mLeaf = nullptr;
    return kVoSuccess;
  }
  if (!multipart) {
    mPlan = planLeaf(entity);
    return kVoSuccess;
  }
  const StructuredValue& type = mSurvey.contentType;
  OpenMultipart open{};
  open.entity = &entity;
  open.belowSigned = layoutOf(entity).belowSigned || equalNoCase(type.value, "multipart/signed");
  open.isDigest = equalNoCase(type.value, "multipart/digest");
  if (const StructuredParameter* const charset = type.find("charset")) open.charset = inheritedCharset(charset->value);
  mBoundaries.push(readsOn() ? withoutTrailingBlanks(mBoundary) : mBoundary);
  mOpen.push_back(std::move(open));
  layoutOf(entity).isMultipartBody = true;
  mLeaf = nullptr;
  return kVoSuccess;
}

// A byte order mark belongs to the block, but not to its first field.
void MessageParser::surveyRoot() {
  const std::uint64_t start = mReader.get().getOffset();
  char first[kByteOrderMark.size()];
  const bool isMarked = mReader.get().read(first, sizeof first) == sizeof first &&
                        std::string_view(first, sizeof first) == kByteOrderMark;
  if (!isMarked) moveTo(mReader, start);
  surveyHeaderBlock(mSurvey, mReader, mRoot.getParentEntity() != nullptr, nullptr);
  if (!isMarked) return;
  mSurvey.offset -= static_cast<std::uint32_t>(kByteOrderMark.size());
  mSurvey.size += static_cast<std::uint32_t>(kByteOrderMark.size());
}

// What the header block says about an entity whose body is still to be read; `placed` says what is around it.
VoMsgEntityLayout MessageParser::surveyedLayout(VoMsgEntityLayout placed, bool isChild) const {
  placed.isChildHeader = isChild;
  if (!mOpen.empty()) placed.belowSigned = mOpen.back().belowSigned;
  placed.headerOffset = mSurvey.offset;
  placed.headerSize = mSurvey.size;
  placed.hasHeaderRange = true;
  placed.unterminatedHeader = mSurvey.end == HeaderEnd::boundaryLine || mSurvey.end == HeaderEnd::endOfData;
  placed.bodyOffset = mSurvey.offset + mSurvey.size;
  placed.bodySize = 0;
  placed.hasBodyRange = true;
  placed.declaredType =
      static_cast<std::uint8_t>(mSurvey.hasContentType ? commonValueOf(mSurvey.contentType.value) : CommonValue::none);
  placed.declaredEncoding =
      static_cast<std::uint8_t>(mSurvey.hasEncoding ? commonValueOf(mSurvey.encoding.value) : CommonValue::none);
  placed.mayBePartial = mSurvey.hasContentType && startsWithNoCase(mSurvey.contentType.value, "message/");
  return placed;
}

// Tests the block and settles what is odd about it. The fields are built at once where building them later could
// give something else: when the parser corrects them, or when they depend on what is around the block.
VoErrorCode MessageParser::_isMalformedMessage(VoMsgRfc822Entity& entity, bool& multipart) {
  const std::string& inherited = mOpen.empty() ? mRootCharset : mOpen.back().charset;
  const auto build = [&]() -> VoMsgEntityHeader& {
    const PositionKeeper keeper(mReader);
    return Inside::buildHeader(entity, inherited.empty() ? "us-ascii" : inherited.c_str());
  };
  if (voFailed(mSurvey.code) || mSurvey.contentTypesDiffer) {
    build();
    if (voFailed(mSurvey.code)) return mSurvey.code;
    if (const VoErrorCode code = endsReading(kVoMalformed); voFailed(code)) return code;
  }
  const StructuredValue& type = mSurvey.contentType;
  unsigned boundaries = 0;
  if (mSurvey.hasContentType) {
    multipart = startsWithNoCase(type.value, "multipart/");
    for (std::size_t i = 0; i < type.count; ++i) boundaries += equalNoCase(type.parameters[i].name, "boundary");
  }
  mBoundary.clear();
  const bool withoutBoundary = multipart && !findBoundary(type, mBoundary);
  const auto checkBoundary = [&] {
    if (!multipart || !mBoundary.empty()) return kVoSuccess;
    const VoErrorCode code = endsReading(kVoMalformed);
    multipart = voFailed(code);
    return code;
  };
  HeaderMark mark = mSurvey.mark;
  if (mark == HeaderMark::none && boundaries > 1) mark = HeaderMark::repeatedBoundary;
  if (mark == HeaderMark::none && withoutBoundary) mark = HeaderMark::missingBoundary;
  if (mark == HeaderMark::none && inherited.empty() && !(VoMsgExtraOption & kVoOptionKeepFoldSpace))
    return checkBoundary();

  VoMsgEntityHeader& header = build();
  if (mark != HeaderMark::none) {
    header.setMark(mark, mSurvey.mark != HeaderMark::none ? mSurvey.markOffset : mSurvey.offset);
    markForRewriting(entity);
  }
  VoMsgHeaderField* const field = header.getHeader("Content-Type");
  if (field && boundaries > 1) {
    field->_keepLastParameter("boundary");
  }
  if (field && withoutBoundary) {
    field->_dropParameters();
    if (voFailed(field->setRawFieldValue("text/plain")) ||
        voFailed(field->appendRawParameter("charset", "us-ascii", false, "us-ascii")))
      return kVoNoMemory;
    multipart = false;
  }
  return checkBoundary();
}

// A marked block is written anew, except where that would destroy what nobody touched: text that follows a block
// without its empty line, and whatever a signature covers.
void MessageParser::markForRewriting(VoMsgRfc822Entity& entity) {
  if (layoutOf(entity).unterminatedHeader || layoutOf(entity).belowSigned) return;
  layoutOf(entity).isMarked = true;
  VoMsgEntity* up = &entity;
  for (auto* current = &entity; current && !layoutOf(*current).subtreeMarked;
       current = dynamic_cast<VoMsgRfc822Entity*>(up)) {
    layoutOf(*current).subtreeMarked = true;
    if (current == &mRoot) return;
    up = up->getParentEntity();
  }
}

bool MessageParser::namedLike(VoMsgRfc822Entity& entity, bool (*likeThis)(std::string_view name)) {
  const auto needsDecoding = [](const StructuredValue& value, std::string_view name) {
    for (std::size_t i = 0; i < value.count; ++i) {
      const StructuredParameter& parameter = value.parameters[i];
      if (!startsWithNoCase(parameter.name, name)) continue;
      if (parameter.name.size() == name.size() ? parameter.isEncoded : parameter.name[name.size()] == '*') return true;
    }
    return false;
  };
  if ((mSurvey.hasDisposition && needsDecoding(mSurvey.disposition, "filename")) ||
      (mSurvey.hasContentType && needsDecoding(mSurvey.contentType, "name"))) {
    const PositionKeeper keeper(mReader);
    const char* const name = entity.getFileName("us-ascii");
    return name && likeThis(name);
  }
  const StructuredParameter* name = mSurvey.hasDisposition ? mSurvey.disposition.find("filename") : nullptr;
  if (!name && mSurvey.hasContentType) name = mSurvey.contentType.find("name");
  return name && likeThis(name->value);
}

// What the block declares as its content: a multipart that cannot be cut was made text.
std::string_view MessageParser::declaredType() const {
  const std::string_view type = mSurvey.contentType.value;
  return startsWithNoCase(type, "multipart/") ? "text/plain" : type;
}

MessageParser::LeafPlan MessageParser::planLeaf(VoMsgRfc822Entity& entity) {
  LeafPlan plan{};
  plan.encoding = mSurvey.hasEncoding ? transferEncodingOf(mSurvey.encoding.value.c_str()) : TransferEncoding::identity;
  plan.text = _isTextMessage();
  if ((&entity == &mRoot ? mRootLevel : mPartLevel) >= VoMsgMailMessage::getMaxExtractLevel()) return plan;
  plan.message = _isNeedToExtract(entity);
  plan.tnefByType = _isTnefMessage();
  plan.tnefByName = !plan.tnefByType && _isTnefByName(entity);
  return plan;
}

bool MessageParser::_isNeedToExtract(VoMsgRfc822Entity& entity) {
  const std::string_view type = declaredType();
  if (mSurvey.hasContentType && equalNoCase(type, "message/rfc822")) return true;
  if (readsOn() && mSurvey.hasContentType && equalNoCase(type, "message/global")) return true;
  if (readsOn() && !mSurvey.hasContentType && !mOpen.empty() && mOpen.back().isDigest) return true;
  return !(mSurvey.hasContentType && startsWithNoCase(type, "application/mac-binhex")) && namedLike(entity, isEmlName);
}

bool MessageParser::_isTnefMessage() const {
  const std::string_view type = declaredType();
  return mSurvey.hasContentType &&
         (equalNoCase(type, "application/ms-tnef") || equalNoCase(type, "application/x-ms-tnef"));
}

// Gateways relabel TNEF as they please, so its usual name is as good, unless the type claims something else to read.
bool MessageParser::_isTnefByName(VoMsgRfc822Entity& entity) {
  const std::string_view type = declaredType();
  if (mSurvey.hasContentType && (startsWithNoCase(type, "message/") || startsWithNoCase(type, "text/"))) return false;
  return namedLike(entity, isTnefName);
}

bool MessageParser::_isTextMessage() const {
  const std::string_view type = declaredType();
  return !mSurvey.hasContentType || startsWithNoCase(type, "text") ||
         startsWithNoCase(type, "application/mac-binhex40") ||
         (startsWithNoCase(type, "application/octet-stream") && mSurvey.hasEncoding &&
          startsWithNoCase(mSurvey.encoding.value, "x-uuencode"));
}

VoErrorCode MessageParser::_parseSingleBody(std::uint64_t end) {
  if (!mLeaf) return kVoSuccess;
  VoMsgRfc822Entity& entity = *mLeaf;
  layoutOf(entity).endBodyAt(end);
  mLeaf = nullptr;
  return layoutOf(entity).bodySize > 0 ? lookInside(entity) : kVoSuccess;
}

// At most one kind of child per leaf: a nested message, else TNEF, else attachments embedded in text.
VoErrorCode MessageParser::lookInside(VoMsgRfc822Entity& entity) {
  if (mPlan.message) return _parseRfc822Message(entity);
  if (mPlan.tnefByType || mPlan.tnefByName) {
    const PositionKeeper keeper(mReader);
    parseTnefChild(&entity, childPlace());
    if (mShortage.seen()) return mShortage.code();
    if (entity.hasChildEntity() || !mPlan.tnefByType) return kVoSuccess;
    return _parseTextMessage(entity);  // named TNEF, but it is none
  }
  return mPlan.text ? _parseTextMessage(entity) : kVoSuccess;
}

// A message that lies in its part as it is is read in place; an encoded one from a decoded copy of its own. The parser
// then waits for it: what stands behind is read once resume() says how that went.
VoErrorCode MessageParser::_parseRfc822Message(VoMsgRfc822Entity& entity) {
  VO_LOG(9, mTag, "begin: _parseRfc822Message");
  if (mSurvey.hasContentType && mSurvey.contentType.find("charset")) {  // which the message inherits
    const PositionKeeper keeper(mReader);
    Inside::readHeader(entity);
  }
  std::unique_ptr<VoMsgResourceLocator> content;
  if (mPlan.encoding == TransferEncoding::identity) {
    VoObjectStub<VoMsgResourceLocator> whole(mSource.getObject()->sharedResource());
    content = std::make_unique<RangeResource>(whole, mSource.getObject()->wholeState(), layoutOf(entity).bodyOffset,
                                              layoutOf(entity).bodySize);
  } else {
    const PositionKeeper keeper(mReader);
    if (!moveTo(mReader, layoutOf(entity).bodyOffset)) return kVoReadFailed;
    content = decodedResource(decodedRoom(mPlan.encoding, mReader, layoutOf(entity).bodySize));
    if (!content) return kVoWriteFailed;
    const VoErrorCode code = decodeTransfer(mPlan.encoding, *content, mReader, layoutOf(entity).bodySize);
    if (voFailed(code)) return endsReading(code);
  }
  auto message = std::make_unique<VoMsgRfc822Message>(static_cast<VoMsgEntity*>(&entity));
  layoutOf(*message).belowSigned = layoutOf(entity).belowSigned;
  mNestedPart = &entity;
  mNested = {message.get(), std::move(content)};
  TreeAccess::append(&entity, message.release());
  return kVoSuccess;
}

VoErrorCode MessageParser::_parseTextMessage(VoMsgRfc822Entity& entity) {
  VO_LOG(9, mTag, "begin: _parseTextMessage");
  const PositionKeeper keeper(mReader);
  const VoErrorCode code = scanEmbeddedBlocks(&entity, mSource.getObject(), mPlan.encoding, childPlace());
  VO_LOG(9, mTag, "end  : _parseTextMessage");
  if (mShortage.seen()) return kVoNoMemory;
  return (code & 0xFFFFu) == (kVoNoContent & 0xFFFFu) ? kVoSuccess : code;
}

VoErrorCode MessageParser::closeInnermost(std::uint64_t end) {
  OpenMultipart& open = mOpen.back();
  VoMsgRfc822Entity& entity = *open.entity;
  layoutOf(entity).endBodyAt(end);
  if (!open.inEpilogue) {
    mBoundaries.pop();
  } else if (end > open.epilogueOffset) {
    const PositionKeeper keeper(mReader);
    scanEpilogue(&entity, mSource.getObject(), open.epilogueOffset,
                 static_cast<std::uint32_t>(end - open.epilogueOffset), childPlace());
  }
  mOpen.pop_back();
  return mShortage.seen() ? kVoNoMemory : kVoSuccess;
}

VoErrorCode MessageParser::closeAll(std::uint64_t end) {
  VoErrorCode code = kVoSuccess;
  while (!mOpen.empty()) code = closeInnermost(end);
  return code;
}

}  // namespace vomsg::detail
