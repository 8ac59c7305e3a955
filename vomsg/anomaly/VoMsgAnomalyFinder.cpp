// The walk over a tree in document order. For each entity it knows the source that its offsets are in, where that lies
// in the outermost one, and the boundaries in force. Every byte of a source is looked at a fixed number of times:
// header blocks whole, the gaps between the parts of a multipart, and the bodies of leaves; never a multipart's body,
// which holds those of its parts.

#include "vomsg/anomaly/VoMsgAnomalyFinder.h"

#include <algorithm>
#include <string>

#include "vomsg/anomaly/VoMsgContentAnomalies.h"
#include "vomsg/anomaly/VoMsgEncodingAnomalies.h"
#include "vomsg/anomaly/VoMsgHeaderAnomalies.h"
#include "vomsg/anomaly/VoMsgValueAnomalies.h"
#include "vomsg/embedded/VoMsgEmbededEntity.h"
#include "vomsg/embedded/VoMsgMultiEmbededEntity.h"
#include "vomsg/encoding/VoMsgTransferEncoding.h"
#include "vomsg/entity/VoMsgMailMessage.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgResourceManager.h"

namespace vomsg::detail {
namespace {

constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;
constexpr std::uint32_t kMaxBlock = 0x100000;  // of a longer header block only the beginning is looked at

bool isMime(const VoMsgEntity& entity) {
  return (entity.getEntityTypeID() & ~kVoEntityIsContainer) == kVoEntityMime ||
         entity.getEntityTypeID() == kVoEntityRfc822Message;
}
bool isTnefMessage(const VoMsgEntity& entity) { return entity.getEntityTypeID() == kVoEntityTnefMessage; }

std::string bytesAt(VoMsgBufferedReader& reader, std::uint32_t offset, std::uint32_t size) {
  std::string bytes;
  if (reader.rseek(static_cast<long>(offset), 0) < 0) return bytes;
  bytes.resize(std::min(size, kMaxBlock));
  bytes.resize(reader.read(bytes.data(), static_cast<unsigned>(bytes.size())));
  return bytes;
}

TransferEncoding encodingOf(const VoMsgEntity& entity) { return transferEncodingOf(entity.getEncoding()); }

bool isNamedTnef(const VoMsgEntity& entity) {
  return entity.isContentType("application", "ms-tnef") || entity.isContentType("application", "x-ms-tnef");
}

}  // namespace

AnomalyFinder::AnomalyFinder(VoMsgAnomalyList& list, OpenReader open) : mSink(list), mOpenReader(std::move(open)) {}

bool AnomalyFinder::run(VoMsgEntity* root) {
  mOpen.emplace_back();
  enter(root);
  while (mIsWhole) {
    if (VoMsgEntity* const child = mLevels.back().entity->getChildEntity())
      enter(child);
    else if (!leave())
      break;
  }
  return mIsWhole;
}

bool AnomalyFinder::leave() {
  while (!mLevels.empty()) {
    const Level left = mLevels.back();
    mLevels.pop_back();
    if (left.hasBoundary) mOpen.back().pop();
    if (left.hasOwnScope) mOpen.pop_back();
    if (mLevels.empty()) return false;
    if (VoMsgEntity* const sibling = left.entity->getNextSiblingEntity()) {
      enter(sibling);
      return true;
    }
  }
  return false;
}

void AnomalyFinder::enter(VoMsgEntity* entity) {
  Level level{entity, nullptr, {}, false, false, false};
  auto* const message = dynamic_cast<VoMsgMailMessage*>(entity);
  const bool isRoot = mLevels.empty();
  if (!isRoot) {
    const Level& above = mLevels.back();
    level.message = above.message;
    level.source = above.source;
    level.isInTnef = above.isInTnef || isTnefMessage(*above.entity);
    // A message, or a text with blocks, has what its part holds for a source.
    const auto* const part = dynamic_cast<VoMsgRfc822Entity*>(above.entity);
    const auto* const blocks = dynamic_cast<VoMsgMultiEmbededEntity*>(entity);
    if (part && blocks && blocks->isEpilogue()) {
      level.source = above.source.inside(false, blocks->epilogue().offset, blocks->epilogue().size);
    } else if (part && (message || blocks)) {
      const bool isDecoded = encodingOf(*part) != TransferEncoding::identity;
      level.source = above.source.inside(isDecoded, part->getBodyOffset(), part->getBodySize());
      level.hasOwnScope = isDecoded;
    } else if (message) {
      // In a block of a text, or in a TNEF stream: what was decoded there has no place outside.
      level.source = above.source;
      level.source.isDecoded = true;
      if (const auto* const block = dynamic_cast<VoMsgEmbededEntity*>(above.entity); block && !above.source.isDecoded)
        level.source = above.source.inside(true, block->getBodyOffset(), block->getBodySize());
      level.hasOwnScope = true;
    }
  }
  if (message) level.message = message;
  if (level.hasOwnScope) mOpen.emplace_back();
  mLevels.push_back(level);
  mSink.enter(entity, mPart++, level.source);
  Level& own = mLevels.back();
  if (isTnefMessage(*entity))
    examineTnef(own);
  else if (auto* const mime = dynamic_cast<VoMsgRfc822Entity*>(entity))
    examineMime(*mime, own);
  else
    examineEmbedded(own);
}

VoMsgBufferedReader* AnomalyFinder::reader() {
  const VoMsgMailMessage* const message = mLevels.back().message;
  if (message != mpReaderOf) {
    mReader.reset();
    if (message) mReader = mOpenReader(*message);
    mpReaderOf = message;
  }
  if (!mReader) mIsWhole = false;
  return mReader.get();
}

void AnomalyFinder::examineMime(VoMsgRfc822Entity& entity, Level& level) {
  if (entity._isModified() || !reader()) return;
  examineBlock(entity);
  if (entity.isMultipartEntity())
    examineMultipart(entity, level);
  else
    examineLeaf(entity);
}

void AnomalyFinder::examineBlock(VoMsgRfc822Entity& entity) {
  const std::uint32_t base = entity.getHeaderOffset();
  const std::string block = bytesAt(*mReader, base, entity.getHeaderSize());
  const std::vector<RawField> fields = findLineAnomalies(block, base, mSink);
  findRepeatedFields(fields, base, mSink);
  findPassedLimits(fields, base, entity.getParentEntity() != nullptr, mSink);
  findBoundaryParameters(fields, base, mSink);
  findDeclaredEncoding(fields, base, mSink);
  findWordAnomalies(fields, base, mSink);
  findAddressAnomalies(fields, base, mSink);
  findNameAnomalies(fields, base, entity, mSink);
}

void AnomalyFinder::examineMultipart(VoMsgRfc822Entity& entity, Level& level) {
  const char* const given = entity.getBoundary();
  if (!given || !*given) return;
  const std::string boundary = given;
  const std::uint64_t header = entity.getHeaderOffset();
  mOpen.back().findCollision(boundary, header, entity.getHeaderSize(), mSink);
  mOpen.back().push(boundary);
  level.hasBoundary = true;

  const bool isSigned = entity.isContentType("multipart", "signed");
  std::uint64_t at = entity.getBodyOffset();
  const std::uint64_t end = at + entity.getBodySize();
  unsigned parts = 0;
  bool isClosed = false;
  const auto gapTo = [&](GapKind kind, std::uint64_t to) {
    if (to > at) findGapAnomalies(*mReader, {kind, at, to - at}, boundary, isClosed, mSink);
  };
  for (VoMsgEntity* child = entity.getChildEntity(); child; child = child->getNextSiblingEntity()) {
    const auto* const part = dynamic_cast<VoMsgRfc822Entity*>(child);
    if (!part) {
      const auto* const blocks = dynamic_cast<VoMsgMultiEmbededEntity*>(child);
      if (blocks) mSink.add(kVoAnomalyEpilogueAttachment, blocks->epilogue().offset, blocks->epilogue().size);
      continue;
    }
    gapTo(parts == 0 ? GapKind::preamble : GapKind::between, part->getHeaderOffset());
    at = std::uint64_t{part->getHeaderOffset()} + part->getHeaderSize();
    if (part->getBodySize() > 0) at = std::uint64_t{part->getBodyOffset()} + part->getBodySize();
    ++parts;
    if (isSigned && parts == 3) mSink.add(kVoAnomalyBesideSignature, part->getHeaderOffset(), part->getHeaderSize());
  }
  gapTo(parts == 0 ? GapKind::preamble : GapKind::epilogue, end);
  if (parts == 0)
    mSink.add(kVoAnomalyMultipartNoParts, header, entity.getHeaderSize());
  else if (!isClosed)
    mSink.add(kVoAnomalyMultipartUnclosed, end, 0);
  const VoMsgEntity* const above = entity.getParentEntity();
  if (isSigned && above && above->isMultipartEntity() && above->getChildEntity()->getNextSiblingEntity())
    mSink.add(kVoAnomalyBesideSignature, header, entity.getHeaderSize());
}

void AnomalyFinder::examineLeaf(VoMsgRfc822Entity& entity) {
  examineNesting(entity);
  if (entity.getBodySize() == 0) return;
  const VoMsgEntity* const child = entity.getChildEntity();
  const bool isPassedThrough = child && isMime(*child) && encodingOf(entity) == TransferEncoding::identity;
  if (isPassedThrough) return;  // the nested message's entities are looked at themselves
  examineBody(entity);
  if (!child || !isMime(*child)) examineContent(entity);
}

void AnomalyFinder::examineNesting(VoMsgRfc822Entity& entity) {
  const std::uint64_t header = entity.getHeaderOffset();
  const auto add = [&](VoMsgAnomalyCode code) { mSink.add(code, header, entity.getHeaderSize()); };
  if (entity.isContentType("message", "partial")) add(kVoAnomalyMessagePartial);
  if (entity.isContentType("message", "external-body")) add(kVoAnomalyMessageExternalBody);
  if (entity.hasChildEntity() || entity.getBodySize() == 0) return;
  const bool isMessage = equalNoCase(viewOf(entity.getContentType()), "message/rfc822");
  if (!isMessage && !isNamedTnef(entity)) return;
  const bool isAtLimit = static_cast<int>(entity.getNestingLevel()) >= VoMsgMailMessage::getMaxExtractLevel();
  if (isAtLimit)
    add(kVoAnomalyNestingLimit);
  else
    add(isMessage ? kVoAnomalyNestedUnreadable : kVoAnomalyTnefUnreadable);
}

void AnomalyFinder::examineBody(VoMsgRfc822Entity& entity) {
  const std::uint64_t offset = entity.getBodyOffset();
  const std::uint64_t size = entity.getBodySize();
  const TransferEncoding encoding = encodingOf(entity);
  const bool isBinary = equalNoCase(viewOf(entity.getEncoding()), "binary");
  findNearDelimiters(*mReader, offset, size, mOpen.back(), !isBinary, mSink);
  switch (encoding) {
    case TransferEncoding::base64:
      return findBase64Anomalies(*mReader, offset, size, mSink);
    case TransferEncoding::quotedPrintable:
      return findQuotedPrintableAnomalies(*mReader, offset, size, mSink);
    case TransferEncoding::binHex:
      return findBinHexAnomalies(*mReader, offset, size, mSink);
    case TransferEncoding::uuencode:
      return findUuencodeAnomalies(*mReader, offset, size, mSink);
    case TransferEncoding::identity:
      if (entity.hasChildEntity()) findUuencodeAnomalies(*mReader, offset, size, mSink);
      return;
  }
}

void AnomalyFinder::examineContent(VoMsgRfc822Entity& entity) {
  const std::uint32_t offset = entity.getBodyOffset();
  const std::uint32_t size = entity.getBodySize();
  const TransferEncoding encoding = encodingOf(entity);
  const std::string type(viewOf(entity.getContentType()));
  const std::string charset(viewOf(entity.getHeaderParameterValue("Content-Type", "charset", "us-ascii")));
  const DecodedContent content{type, charset, offset, size};
  std::unique_ptr<VoMsgResourceLocator> decoded;
  std::unique_ptr<VoMsgBufferedReader> bytes;
  if (mReader->rseek(static_cast<long>(offset), 0) < 0) return;
  decoded.reset(VoMsgResourceManager::createTmpResource(std::max(1u, decodedRoom(encoding, *mReader, size))));
  const bool isThere = decoded && mReader->rseek(static_cast<long>(offset), 0) >= 0;
  // Broken content is odd, but not by what is decoded of it.
  if (!isThere || voFailed(decodeTransfer(encoding, *decoded, *mReader, size))) return;
  bytes.reset(decoded->getInputStream(kData));
  if (!bytes) return;
  const std::uint64_t decodedSize = decoded->getSize(kData);
  if (encoding == TransferEncoding::base64 || encoding == TransferEncoding::quotedPrintable) {
    if (holdsDelimiter(*bytes, decodedSize, mOpen.back())) mSink.add(kVoAnomalyDelimiterInDecoded, offset, size);
  }
  if (startsWithNoCase(type, "text/") || type.empty()) findTextAnomalies(*bytes, decodedSize, content, mSink);
  findTypeAnomalies(*bytes, decodedSize, content, mSink);
}

void AnomalyFinder::examineTnef(Level& level) {
  if (level.isInTnef) return mSink.add(kVoAnomalyTnefNested, 0, 0);
  if (!reader()) return;
  findTnefAnomalies(*mReader, mReader->getSize(), mSink);
}

// Attachments in texts and in TNEF streams: they have names, and nothing else that is their own.
void AnomalyFinder::examineEmbedded(Level& level) {
  const VoMsgEntity& entity = *level.entity;
  const char* const name = entity.getFileName("utf-8");
  if (!name) return;
  const auto* const block = dynamic_cast<const VoMsgEmbededEntity*>(&entity);
  const std::uint64_t offset = block ? block->getBodyOffset() : 0;
  const std::uint64_t size = block ? block->getBodySize() : 0;
  findNameCharacters(name, offset, size, mSink);
  if (level.isInTnef && equalNoCase(name, "winmail.dat")) mSink.add(kVoAnomalyTnefNested, offset, size);
}

}  // namespace vomsg::detail

const VoMsgAnomalyList* VoMsgMailMessage::getAnomalies() {
  if (!mCollectsAnomalies) return nullptr;
  return vomsg::detail::guardedOr<const VoMsgAnomalyList*>(nullptr, [this]() -> const VoMsgAnomalyList* {
    auto list = std::make_unique<VoMsgAnomalyList>();
    const auto open = [](const VoMsgMailMessage& message) {
      const VoMsgResourceLocator* const source = message.mSource.getObject();
      return std::unique_ptr<VoMsgBufferedReader>(source ? source->getInputStream(VoMsgResourceLocator::dataPart)
                                                         : nullptr);
    };
    if (!vomsg::detail::AnomalyFinder(*list, open).run(this)) return nullptr;
    const VoMsgAnomalyList* const found = list.get();
    vomsg::detail::keepAnomalies(this, std::move(list));
    return found;
  });
}
