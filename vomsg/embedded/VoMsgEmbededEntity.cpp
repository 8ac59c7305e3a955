#include "vomsg/embedded/VoMsgEmbededEntity.h"

#include <algorithm>
#include <memory>
#include <string>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/embedded/VoMsgLineEndFilter.h"
#include "vomsg/embedded/VoMsgMultiEmbededEntity.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoMsgTransferEncoding.h"
#include "vomsg/encoding/VoUUEncode.h"
#include "vomsg/entity/VoMsgMailText.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/entity/VoMsgTreeSources.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLineWalk.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgShortage.h"
#include "vomsg/foundation/VoObjectStub.h"

using namespace vomsg::detail;

namespace {

constexpr char kLogSource[] = "VoMsgEmbededEntity";
constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;
constexpr std::size_t kLongestName = 65536;

constexpr TransferEncoding transferEncodingFor(EmbeddedKind kind) {
  switch (kind) {
    case EmbeddedKind::uuencode:
      return TransferEncoding::uuencode;
    case EmbeddedKind::binHex:
      return TransferEncoding::binHex;
    case EmbeddedKind::text:
      break;
  }
  return TransferEncoding::identity;
}

bool convertName(std::string& name, const char* to, const char* from) {
  if (voIsEqualCharsetName(to, from)) return true;
  std::string converted;
  if (!convertWholeText(to, from, Loss::replaced, name, converted)) return false;
  name.swap(converted);
  return true;
}

// How a piece ends its lines, for what takes its place.
struct LineEnds {
  std::string_view lineEnd = "\r\n";  // of the first line
  bool last = true;                   // the last line has one
};

LineEnds lineEndsOf(VoMsgBufferedReader& reader, std::uint32_t size) {
  LineEnds ends;
  const std::uint64_t start = reader.getOffset();
  bool lineFeed = false;
  const WalkedLine line = walkLine(reader, size, [&](std::string_view stretch, bool) {
    lineFeed = stretch.ends_with('\n');
    return true;
  });
  if (line.terminatorLength == 1) ends.lineEnd = lineFeed ? "\n" : "\r";
  char last = '\0';
  if (size > 0 && moveTo(reader, start + size - 1)) reader.read(&last, 1);
  ends.last = isLineEnd(last);
  return ends;
}

}  // namespace

struct VoMsgEmbededEntity::State {
  VoObjectStub<VoMsgResourceLocator> bytes;  // what takes the place of the piece; empty while that is unchanged
  std::string name;
  bool hasName = false;
  std::string shownName;
  std::unique_ptr<VoMsgResourceLocator> decoded;
  std::unique_ptr<VoMsgResourceLocator> raw;
  std::unique_ptr<VoMsgResourceLocator> text;
};

VoMsgEmbededEntity::VoMsgEmbededEntity(const EmbeddedPiece& piece) : mPiece(piece) {}
VoMsgEmbededEntity::~VoMsgEmbededEntity() = default;

std::uint32_t VoMsgEmbededEntity::getEntityTypeID() const {
  const bool isContainer = mpCild && (mpCild->getEntityTypeID() & kVoEntityIsMessage) != 0;
  return isContainer ? kVoEntityEmbeded | kVoEntityIsContainer : kVoEntityEmbeded;
}

const char* VoMsgEmbededEntity::_getEntityName() { return "VoMsgEmbededEntity"; }
bool VoMsgEmbededEntity::isMultipartEntity() const { return false; }
bool VoMsgEmbededEntity::_isModified() { return mpState && mpState->bytes.getObject(); }
VoMsgMultiEmbededEntity* VoMsgEmbededEntity::whole() const { return dynamic_cast<VoMsgMultiEmbededEntity*>(mpParent); }

VoMsgEmbededEntity::State& VoMsgEmbededEntity::state() const {
  if (!mpState) mpState = std::make_unique<State>();
  return *mpState;
}

// Calls `sink(reader, size)` with a reader at the first byte of the piece.
template <class Sink>
VoErrorCode VoMsgEmbededEntity::withBytes(Sink&& sink) const {
  if (const VoMsgResourceLocator* const bytes = mpState ? mpState->bytes.getObject() : nullptr) {
    const std::unique_ptr<VoMsgBufferedReader> reader(bytes->getInputStream(kData));
    return reader ? sink(*reader, bytes->getSize(kData)) : kVoReadFailed;
  }
  const VoMsgMultiEmbededEntity* const text = whole();
  const OpenSource source(text ? text->textSource() : nullptr);
  if (!source.reader() || !moveTo(*source.reader(), mPiece.offset)) return kVoReadFailed;
  return sink(*source.reader(), mPiece.size);
}

// ---- what it is

const char* VoMsgEmbededEntity::getContentType() const { return isBlock() ? "application/octet-stream" : "text/plain"; }

const char* VoMsgEmbededEntity::getCharset() const { return isBlock() || !whole() ? nullptr : whole()->getCharset(); }

const char* VoMsgEmbededEntity::getEncoding() const {
  switch (mPiece.kind) {
    case EmbeddedKind::uuencode:
      return "x-uuencode";
    case EmbeddedKind::binHex:
      return "mac-binhex40";
    case EmbeddedKind::text:
      break;
  }
  return nullptr;
}

VoErrorCode VoMsgEmbededEntity::readName(std::string& name) const {
  name.clear();
  if (!isBlock()) return kVoSuccess;
  return guarded([&] {
    return withBytes([&](VoMsgBufferedReader& reader, std::uint32_t size) -> VoErrorCode {
      if (mPiece.kind == EmbeddedKind::binHex) {
        BinHexSummary summary;
        const VoErrorCode surveyed = surveyBinHex(reader, size, summary);
        name = summary.name;
        return surveyed;
      }
      std::string line;
      walkLine(reader, size, [&](std::string_view stretch, bool) {
        line.append(stretch.substr(0, kLongestName - line.size()));
        return true;
      });
      std::string_view found;
      if (isUUEncodeBegin(line, found)) name = found;
      return kVoSuccess;
    });
  });
}

const char* VoMsgEmbededEntity::rawName() const {
  if (!isBlock()) return nullptr;
  State& own = state();
  if (!own.hasName) own.hasName = !voFailed(readName(own.name));
  return own.hasName ? own.name.c_str() : nullptr;
}

// A block whose name could not be read for want of something must not lose it by being written anew.
VoErrorCode VoMsgEmbededEntity::presentName(std::string& name) const {
  const VoErrorCode code = readName(name);
  return code == kVoDecodeFailed ? VoErrorCode{kVoSuccess} : code;
}

const char* VoMsgEmbededEntity::getFileName(const char* charset) const {
  return guardedOr<const char*>(nullptr, [&]() -> const char* {
    const char* const name = rawName();
    if (!name || !charset) return name;
    const char* from = whole() && !whole()->isEpilogue() ? whole()->getCharset() : nullptr;
    // A text that names no charset does not say what its names are in either.
    if (!from || !*from) from = isUtf8(name) ? "utf-8" : "windows-1252";
    state().shownName = name;
    return convertName(state().shownName, charset, from) ? state().shownName.c_str() : name;
  });
}

unsigned VoMsgEmbededEntity::getContentSize() const {
  return guardedOr(0u, [&] {
    unsigned count = 0;
    const VoErrorCode code = withBytes([&](VoMsgBufferedReader& reader, std::uint32_t size) {
      return countDecoded(transferEncodingFor(mPiece.kind), reader, size, count);
    });
    return voFailed(code) ? 0u : count;
  });
}

void VoMsgEmbededEntity::dumpEntityInf(std::FILE* out) {
  if (!out) return;
  _dumpEntityInf(out);
  std::fprintf(out, "mBodyOffset       : D'%u\n", mPiece.offset);
  std::fprintf(out, "mBodySize         : D'%u\n", mPiece.size);
}

VoMsgBufferedReader* VoMsgEmbededEntity::getContextSource(int& err) {
  if (whole()) return whole()->getContextSource(err);
  err = static_cast<int>(kVoReadFailed);
  return nullptr;
}

// ---- getters

VoErrorCode VoMsgEmbededEntity::fetch(bool decode, std::unique_ptr<VoMsgResourceLocator>& kept,
                                      const VoMsgResourceLocator*& resource) {
  return withBytes([&](VoMsgBufferedReader& reader, std::uint32_t size) -> VoErrorCode {
    if (size == 0) return kVoNoContent;
    const TransferEncoding encoding = decode ? transferEncodingFor(mPiece.kind) : TransferEncoding::identity;
    // A caller who passes a target expects its name to be set, as the decoders of these formats do.
    if (resource) {
      const CountedTarget counted(*resource);
      return decodeTransfer(encoding, counted.target(), reader, size);
    }
    if (!kept) {
      std::unique_ptr<VoMsgResourceLocator> made = decodedResource(decodedRoom(encoding, reader, size));
      if (!made) return kVoWriteFailed;
      const VoErrorCode code = decodeTransfer(encoding, *made, reader, size);
      if (voFailed(code)) return code;
      kept = std::move(made);
    }
    resource = kept.get();
    return kVoSuccess;
  });
}

const VoMsgResourceLocator* VoMsgEmbededEntity::_getContent(int& err, const VoMsgResourceLocator* target) {
  const VoErrorCode code = guarded([&] { return fetch(true, state().decoded, target); });
  err = static_cast<int>(code);
  return voFailed(code) ? nullptr : target;
}

const VoMsgResourceLocator* VoMsgEmbededEntity::_getRawContent(int& err, const VoMsgResourceLocator* target) {
  const VoErrorCode code = guarded([&] { return fetch(false, state().raw, target); });
  err = static_cast<int>(code);
  return voFailed(code) ? nullptr : target;
}

const VoMsgResourceLocator* VoMsgEmbededEntity::_getTextContent(int& err, const VoMsgResourceLocator* target,
                                                                const char* charset) {
  if (isBlock() || !charset) return _getContent(err, target);
  const VoMsgResourceLocator* result = _getContent(err, nullptr);
  if (!result) return nullptr;
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    // Where the part declares none, its whole text says more about the charset than one piece of it.
    auto* const part =
        whole() && !whole()->isEpilogue() ? dynamic_cast<VoMsgRfc822Entity*>(whole()->getParentEntity()) : nullptr;
    VoMsgRfc822Entity::CharsetOrigin origin;
    const char* const from = part ? part->getTextCharset(origin) : getCharset();
    const bool isWanted = from && !voIsEqualCharsetName(charset, from);
    std::unique_ptr<VoMsgResourceLocator> converted;
    const VoErrorCode made = convertBody(*result, charset, isWanted ? from : nullptr, target, converted);
    if (voFailed(made)) return made;
    if (target) {
      result = target;
    } else if (converted) {
      state().text = std::move(converted);
      result = state().text.get();
    }
    return kVoSuccess;
  });
  err = static_cast<int>(code);
  return voFailed(code) ? nullptr : result;
}

const VoMsgResourceLocator* VoMsgEmbededEntity::getContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* const content = isTargetRefused(*this, target, err) ? nullptr : _getContent(err, target);
  VO_LOGGED(_getUUIDString(), static_cast<VoErrorCode>(err));
  return content;
}

const VoMsgResourceLocator* VoMsgEmbededEntity::getRawContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* const content =
      isTargetRefused(*this, target, err) ? nullptr : _getRawContent(err, target);
  VO_LOGGED(_getUUIDString(), static_cast<VoErrorCode>(err));
  return content;
}

const VoMsgResourceLocator* VoMsgEmbededEntity::getTextContent(int& err, const VoMsgResourceLocator* target,
                                                               const char* charset) {
  const VoMsgResourceLocator* const content =
      isTargetRefused(*this, target, err) ? nullptr : _getTextContent(err, target, charset);
  VO_LOGGED(_getUUIDString(), static_cast<VoErrorCode>(err));
  return content;
}

// ---- setters

VoErrorCode VoMsgEmbededEntity::kindFor(const char* encoding, EmbeddedKind& kind) const {
  kind = mPiece.kind;
  if (!encoding) return kVoSuccess;
  if (equalNoCase(encoding, "quoted-printable")) return kVoNotSupported;
  if (!isKnownEncoding(encoding)) return kVoBadEncoding;
  switch (transferEncodingOf(encoding)) {
    case TransferEncoding::uuencode:
      kind = EmbeddedKind::uuencode;
      return kVoSuccess;
    case TransferEncoding::binHex:
      kind = EmbeddedKind::binHex;
      return kVoSuccess;
    case TransferEncoding::identity:
      return isBlock() ? kVoBadEncoding : kVoSuccess;
    case TransferEncoding::base64:
    case TransferEncoding::quotedPrintable:
      break;
  }
  return kVoBadEncoding;
}

// Writes `content` as a piece of that kind, with the line ends of the one whose place it takes. Stretches of text
// stay as they are, but a block that follows begins on a line of its own.
VoErrorCode VoMsgEmbededEntity::encode(const VoMsgResourceLocator& content, EmbeddedKind kind, const char* name,
                                       VoMsgBufferedWriter& target, bool& isExact) const {
  isExact = true;
  LineEnds ends;
  const VoErrorCode looked = withBytes([&](VoMsgBufferedReader& reader, std::uint32_t size) {
    ends = lineEndsOf(reader, size);
    return kVoSuccess;
  });
  if (voFailed(looked)) return looked;
  if (kind != EmbeddedKind::text) {
    LineEndFilter lines(target, ends.lineEnd, ends.last || mpSibling);
    const VoErrorCode code = kind == EmbeddedKind::binHex ? encodeBinHex(lines, content, name, &isExact)
                                                          : encodeUUEncode(lines, content, name);
    return voFailed(code) || lines.finish() ? code : kVoWriteFailed;
  }
  const VoErrorCode code = encodeTransfer(TransferEncoding::identity, target, content);
  const std::uint32_t size = content.getSize(kData);
  if (voFailed(code) || !mpSibling || size == 0) return code;
  const std::unique_ptr<VoMsgBufferedReader> reader(content.getInputStream(kData));
  if (!reader || lineEndsOf(*reader, size).last) return code;
  return target.write(ends.lineEnd.data(), static_cast<unsigned>(ends.lineEnd.size())) ? kVoSuccess : kVoWriteFailed;
}

// The same into the data part of `bytes`. What BinHex cannot say becomes a uuencode block, and `kind` says so.
VoErrorCode VoMsgEmbededEntity::encodeInto(const VoMsgResourceLocator& bytes, const VoMsgResourceLocator& content,
                                           EmbeddedKind& kind, const char* name) const {
  for (;; kind = EmbeddedKind::uuencode) {
    const std::unique_ptr<VoMsgBufferedWriter> writer(bytes.getOutputStream(kData));
    if (!writer) return kVoNoMemory;
    bool isExact;
    const VoErrorCode code = encode(content, kind, name, *writer, isExact);
    if (voFailed(code)) return code;
    if (!writer->flush()) return kVoWriteFailed;
    if (isExact) return kVoSuccess;
  }
}

// Nothing changes before the new piece is complete.
VoErrorCode VoMsgEmbededEntity::install(VoMsgResourceLocator* content, const char* encoding, bool isEncoded,
                                        const char* name) {
  if (!content) return kVoBadArgument;
  EmbeddedKind kind;
  VoErrorCode code = kindFor(encoding, kind);
  if (voFailed(code)) return code;
  const std::uint64_t size = content->getSize(kData);
  std::unique_ptr<VoMsgResourceLocator> bytes =
      temporaryResource(isEncoded || kind == EmbeddedKind::text ? size : 2 * size);
  if (!bytes) return kVoNoMemory;
  if (isEncoded) {
    const std::unique_ptr<VoMsgBufferedWriter> writer(bytes->getOutputStream(kData));
    code = writer ? encodeTransfer(TransferEncoding::identity, *writer, *content) : kVoNoMemory;
  } else {
    code = encodeInto(*bytes, *content, kind, name);
  }
  if (voFailed(code)) return code;
  auto changed = std::make_unique<State>();
  changed->bytes.adopt(std::move(bytes));
  mpState = std::move(changed);
  mPiece.kind = kind;
  return kVoSuccess;
}

VoErrorCode VoMsgEmbededEntity::installText(VoMsgResourceLocator* content, const char* charset) {
  if (!content) return kVoBadArgument;
  // A charset that could not be read for want of something is not one that is missing.
  const ShortageWatch watch;
  const char* const declared = whole() ? whole()->getCharset() : nullptr;
  if (watch.seen()) return watch.code();
  const char* const to = declared && *declared && !whole()->isEpilogue() ? declared : "us-ascii";
  std::unique_ptr<VoMsgResourceLocator> converted;
  if (charset && !isBlock() && !voIsEqualCharsetName(to, charset)) {
    const VoErrorCode code = convertExactly(*content, to, charset, converted);
    if (voFailed(code)) return code;
  }
  std::string name;
  const VoErrorCode code = presentName(name);
  return voFailed(code) ? code : install(converted ? converted.get() : content, nullptr, false, name.c_str());
}

VoErrorCode VoMsgEmbededEntity::setContent(VoMsgResourceLocator* content, const char*, const char* encoding) {
  const VoErrorCode code = guarded([&] {
    std::string name(content ? content->getResourceName(nullptr) : "");
    const VoErrorCode named = name.empty() ? presentName(name) : VoErrorCode{kVoSuccess};
    return voFailed(named) ? named : install(content, encoding, false, name.c_str());
  });
  if (!voFailed(code)) _freeTree();
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgEmbededEntity::setRawContent(VoMsgResourceLocator* content, const char*, const char* encoding) {
  const VoErrorCode code = guarded([&] { return install(content, encoding, true, nullptr); });
  if (!voFailed(code)) _freeTree();
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgEmbededEntity::setTextContent(VoMsgResourceLocator* content, const char*, const char* charset) {
  const VoErrorCode code = guarded([&] { return installText(content, charset); });
  if (!voFailed(code)) _freeTree();
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgEmbededEntity::replaceContent(VoMsgResourceLocator* content, const char* encoding) {
  const VoErrorCode code = guarded([&] {
    std::string name;
    const VoErrorCode named = presentName(name);
    return voFailed(named) ? named : install(content, encoding, false, name.c_str());
  });
  if (!voFailed(code)) _freeTree();
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgEmbededEntity::replaceTextContent(VoMsgResourceLocator* content, const char* charset,
                                                   VoMsgReplaceOption) {
  const VoErrorCode code = guarded([&] { return installText(content, charset); });
  if (!voFailed(code)) _freeTree();
  return VO_LOGGED(_getUUIDString(), code);
}

// The block is encoded anew, since its name is part of it; a message inside it stays.
VoErrorCode VoMsgEmbededEntity::setFileName(const char* name) {
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    if (!name) return kVoBadArgument;
    if (!isBlock()) return kVoNotSupported;
    const std::unique_ptr<VoMsgResourceLocator> content = temporaryResource(mPiece.size);
    if (!content) return kVoNoMemory;
    const VoMsgResourceLocator* target = content.get();
    std::unique_ptr<VoMsgResourceLocator> unused;
    const VoErrorCode decoded = fetch(true, unused, target);
    return voFailed(decoded) ? decoded : install(content.get(), nullptr, false, name);
  });
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgEmbededEntity::setAttachment(VoMsgResourceLocator* content) {
  return setContent(content, nullptr, isBlock() ? nullptr : "x-uuencode");
}

// ---- copying and writing

VoErrorCode VoMsgEmbededEntity::copy(VoMsgEntity* from) {
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    const auto* const other = dynamic_cast<VoMsgEmbededEntity*>(from);
    if (!other) return kVoBadArgument;
    std::unique_ptr<State> changed;
    if (other->mpState && other->mpState->bytes.getObject()) {
      changed = std::make_unique<State>();
      changed->bytes = other->mpState->bytes;
    }
    mpState = std::move(changed);
    mPiece = other->mPiece;
    return kVoSuccess;
  });
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgEmbededEntity::_writeToResource(VoMsgBufferedWriter* writer) {
  if (!writer) return kVoBadArgument;
  return guarded([&]() -> VoErrorCode {
    if (!mpCild || !mpCild->isModified()) {
      return withBytes([&](VoMsgBufferedReader& reader, std::uint32_t size) {
        return copyRange(reader, *writer, reader.getOffset(), size);
      });
    }
    const std::unique_ptr<VoMsgResourceLocator> message = temporaryResource(mPiece.size);
    const std::unique_ptr<VoMsgResourceLocator> block = temporaryResource(2 * std::uint64_t{mPiece.size});
    if (!message || !block) return kVoNoMemory;
    {
      const std::unique_ptr<VoMsgBufferedWriter> inner(message->getOutputStream(kData));
      if (!inner) return kVoWriteFailed;
      const VoErrorCode code = _writeEntityToResource(mpCild, inner.get());
      if (voFailed(code)) return code;
      if (!inner->flush()) return kVoWriteFailed;
    }
    std::string name;
    VoErrorCode code = presentName(name);
    if (voFailed(code)) return code;
    EmbeddedKind kind = mPiece.kind;
    code = encodeInto(*block, *message, kind, name.c_str());
    return voFailed(code) ? code : encodeTransfer(TransferEncoding::identity, *writer, *block);
  });
}
