// What the MIME parser asks about attachments embedded in text. A body is first looked through for lines that begin
// like a block, decoded on the way where it is encoded and kept nowhere; for nearly all bodies that is the end of it.

#include <algorithm>
#include <limits>
#include <memory>

#include "vomsg/embedded/VoMsgBlockStartSearch.h"
#include "vomsg/embedded/VoMsgEmbededEntity.h"
#include "vomsg/embedded/VoMsgEncodedLineSearch.h"
#include "vomsg/embedded/VoMsgMultiEmbededEntity.h"
#include "vomsg/encoding/VoBase64.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoMsgTransferEncoding.h"
#include "vomsg/encoding/VoPieceSink.h"
#include "vomsg/encoding/VoQuotedPrintable.h"
#include "vomsg/encoding/VoUUEncode.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgRangeResource.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {

namespace {

class SearchSink final : public PieceSink {
 public:
  bool put(std::string_view piece) override { return !(found = search.feed(piece)); }
  BlockStartSearch search;
  bool found = false;
};

class SearchWriter : public VoMsgBufferedWriter {
 public:
  SearchWriter() : VoMsgBufferedWriter(0) {}
  bool open() override { return true; }
  bool close() override { return true; }
  bool isOpen() override { return true; }
  bool writeBuffer() override {
    const std::string_view piece(mpBuffer, mUsed);
    mUsed = 0;
    return sink.put(piece);
  }
  SearchSink sink;
};

// Whether a line of the decoded body begins like a block. The reader stands at the body.
bool mayHoldBlocks(TransferEncoding encoding, VoMsgBufferedReader& reader, std::uint32_t size) {
  SearchSink sink;
  switch (encoding) {
    case TransferEncoding::base64:
      decodeBase64To(sink, reader, size);
      return sink.found;
    case TransferEncoding::quotedPrintable: {
      const std::uint64_t start = reader.getOffset();
      if (!mayBeginBlock(reader, size) || !moveTo(reader, start)) return false;
      decodeQuotedPrintableTo(sink, reader, size, true);
      return sink.found;
    }
    case TransferEncoding::uuencode: {
      SearchWriter writer;
      CString name;
      decodeUUEncode(writer, reader, size, name);
      return writer.sink.found;
    }
    case TransferEncoding::binHex:
      decodeBinHexTo(sink, reader, size);
      return sink.found;
    case TransferEncoding::identity:
      break;
  }
  return true;
}

// The decoded body as a resource: in place where it is not encoded. Quoted-printable is decoded to its last byte, so
// that nothing is lost when an edited block has the whole text encoded anew. Null when it cannot be decoded.
std::unique_ptr<VoMsgResourceLocator> decodedBody(TransferEncoding encoding, MessageSource& source,
                                                  std::uint32_t offset, std::uint32_t size) {
  if (encoding == TransferEncoding::identity) {
    const VoObjectStub<VoMsgResourceLocator>& whole = source.sharedResource();
    return std::make_unique<RangeResource>(whole, source.wholeState(), offset, size);
  }
  VoMsgBufferedReader* const reader = source.openReader();
  if (!reader || !moveTo(*reader, offset)) return nullptr;
  std::unique_ptr<VoMsgResourceLocator> text = decodedResource(decodedRoom(encoding, *reader, size));
  if (!text) return nullptr;
  if (encoding != TransferEncoding::quotedPrintable)
    return voFailed(decodeTransfer(encoding, *text, *reader, size)) ? nullptr : std::move(text);
  const std::unique_ptr<VoMsgBufferedWriter> writer(text->getOutputStream(VoMsgResourceLocator::dataPart));
  if (!writer) return nullptr;
  WriterSink sink(*writer);
  return decodeQuotedPrintableTo(sink, *reader, size, true) && writer->flush() ? std::move(text) : nullptr;
}

void addPiece(VoMsgEntity& whole, EmbeddedKind kind, std::uint64_t begin, std::uint64_t end) {
  if (begin == end) return;
  const EmbeddedPiece piece{kind, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end - begin)};
  TreeAccess::append(&whole, new VoMsgEmbededEntity(piece));
}

// Cuts [begin, begin + size) of `reader` into pieces, whose places count from `begin`. Null when there is no block.
std::unique_ptr<VoMsgMultiEmbededEntity> cutText(VoMsgBufferedReader& reader, std::uint32_t begin, std::uint32_t size,
                                                 VoMsgMultiEmbededEntity::Epilogue epilogue) {
  std::unique_ptr<VoMsgMultiEmbededEntity> whole;
  EmbeddedScanner scanner(reader, begin, begin + size);
  std::uint32_t done = 0;
  for (EmbeddedPiece block; scanner.next(block);) {
    if (!whole) whole = std::make_unique<VoMsgMultiEmbededEntity>(epilogue);
    const std::uint32_t at = block.offset - begin;
    addPiece(*whole, EmbeddedKind::text, done, at);
    addPiece(*whole, block.kind, at, at + block.size);
    done = at + block.size;
  }
  if (whole) addPiece(*whole, EmbeddedKind::text, done, size);
  return whole;
}

bool isEmlName(std::string_view name) {
  name = name.substr(0, name.find('\0'));
  return name.size() >= 5 && endsWithNoCase(name, ".eml");
}

// Reads the attachments that are named as messages. One that cannot be read as such stays an attachment.
void readNestedMessages(VoMsgMultiEmbededEntity& whole, const MessagePlace& place) {
  if (static_cast<int>(place.level) >= VoMsgMailMessage::getMaxExtractLevel()) return;
  const OpenSource open(whole.textSource());  // once for all names: there may be a million
  std::string name;
  for (VoMsgEntity* piece = whole.getChildEntity(); piece; piece = piece->getNextSiblingEntity()) {
    const auto& block = dynamic_cast<VoMsgEmbededEntity&>(*piece);
    if (voFailed(block.readName(name)) || !isEmlName(name)) continue;
    const unsigned room = viewOf(block.getEncoding()) == "mac-binhex40" ? block.getContentSize() : 0;
    std::unique_ptr<VoMsgResourceLocator> content = decodedResource(std::max(block.getBodySize(), room));
    int err = 0;
    if (!content || !piece->_getContent(err, content.get()) || content->getSize(VoMsgResourceLocator::dataPart) == 0)
      continue;
    auto message = std::make_unique<VoMsgRfc822Message>(piece);
    VoMsgRfc822Message& nested = *message;
    TreeAccess::append(piece, message.release());
    if (voFailed(nested.readFrom(content.release(), place))) TreeAccess::removeAt(piece, 0);
  }
}

// Scans one text and hangs what was found under `parent`.
VoErrorCode scan(VoMsgEntity& parent, TransferEncoding encoding, MessageSource& source, std::uint32_t offset,
                 std::uint32_t size, VoMsgMultiEmbededEntity::Epilogue epilogue, const MessagePlace& place) {
  VoMsgBufferedReader* const reader = source.openReader();
  if (!reader || !moveTo(*reader, offset)) return kVoReadFailed;
  if (!mayHoldBlocks(encoding, *reader, size)) return kVoNoContent;
  std::unique_ptr<VoMsgMultiEmbededEntity> whole;
  std::unique_ptr<VoMsgResourceLocator> text;
  if (encoding == TransferEncoding::identity) {
    whole = cutText(*reader, offset, size, epilogue);
    if (!whole) return kVoNoContent;
  }
  text = decodedBody(encoding, source, offset, size);
  if (!text) return kVoNoContent;
  VoObjectStub<VoMsgResourceLocator> shared;
  shared.adopt(std::move(text));
  VoObjectStub<MessageSource> textSource;
  textSource.adopt(std::make_unique<MessageSource>(shared, place.options));
  if (!whole) {
    const OpenSource open(textSource.getObject());
    const std::uint32_t decodedSize = textSource.getObject()->resource()->getSize(VoMsgResourceLocator::dataPart);
    if (open.reader()) whole = cutText(*open.reader(), 0, decodedSize, epilogue);
    if (!whole) return kVoNoContent;
  }
  whole->setTextSource(textSource);
  VoMsgMultiEmbededEntity& linked = *whole;
  TreeAccess::append(&parent, whole.release());
  readNestedMessages(linked, place);
  return kVoSuccess;
}

}  // namespace

VoErrorCode scanEmbeddedBlocks(VoMsgRfc822Entity* part, MessageSource* source, TransferEncoding encoding,
                               const MessagePlace& place) {
  return scan(*part, encoding, *source, part->getBodyOffset(), part->getBodySize(), {}, place);
}

VoErrorCode scanEpilogue(VoMsgRfc822Entity* multipart, MessageSource* source, std::uint32_t offset, std::uint32_t size,
                         const MessagePlace& place) {
  return scan(*multipart, TransferEncoding::identity, *source, offset, size, {offset, size}, place);
}

MessageSource* embeddedSource(const VoMsgEntity& entity) {
  const auto* const whole = dynamic_cast<const VoMsgMultiEmbededEntity*>(&entity);
  return whole ? whole->textSource() : nullptr;
}

bool isEpilogueEntity(const VoMsgEntity* entity, std::uint32_t& offset, std::uint32_t& size) {
  const auto* const whole = dynamic_cast<const VoMsgMultiEmbededEntity*>(entity);
  if (!whole || !whole->isEpilogue()) return false;
  offset = whole->epilogue().offset;
  size = whole->epilogue().size;
  return true;
}

VoMsgEntity* copyEmbeddedTree(VoMsgEntity* from) {
  auto whole = std::make_unique<VoMsgMultiEmbededEntity>();
  if (voFailed(whole->copy(from))) return nullptr;
  for (VoMsgEntity* piece = from->getChildEntity(); piece; piece = piece->getNextSiblingEntity()) {
    auto made = std::make_unique<VoMsgEmbededEntity>(EmbeddedPiece{});
    if (voFailed(made->copy(piece))) return nullptr;
    if (auto* const message = dynamic_cast<VoMsgRfc822Message*>(piece->getChildEntity())) {
      auto nested = std::make_unique<VoMsgRfc822Message>(&message->getUUID());
      if (voFailed(nested->_copyMessage(message))) return nullptr;
      TreeAccess::append(made.get(), nested.release());
    }
    TreeAccess::append(whole.get(), made.release());
  }
  return whole.release();
}

}  // namespace vomsg::detail
