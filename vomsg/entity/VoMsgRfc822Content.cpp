// The content of a MIME entity: decoded, raw or as text in a charset; and the setters, which encode at once into a
// resource of the library's own and then bring the header block in line.

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoMsgTransferEncoding.h"
#include "vomsg/entity/VoMsgBodyScanner.h"
#include "vomsg/entity/VoMsgEditUndo.h"
#include "vomsg/entity/VoMsgMailText.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgMultipartBody.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/entity/VoMsgSingleBody.h"
#include "vomsg/entity/VoMsgTextCharset.h"
#include "vomsg/entity/VoMsgTreeSources.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"
#include "vomsg/foundation/VoMsgTreeEpoch.h"

namespace {

using namespace vomsg::detail;

constexpr char kLogSource[] = "VoMsgRfc822Entity";
constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;

bool isTextType(const char* type) { return !type || startsWithNoCase(type, "text/"); }

// Whether the encoded `body` holds a delimiter line of a multipart around `entity`.
bool holdsDelimiter(const VoMsgResourceLocator& body, const VoMsgEntity& entity) {
  const std::unique_ptr<VoMsgBufferedReader> reader(body.getInputStream(kData));
  if (!reader) return false;
  ReaderWindow::fill(*reader);
  const std::string_view window = ReaderWindow::buffered(*reader);
  const char* const end = window.data() + window.size();
  const bool isWhole = window.size() == body.getSize(kData);
  // Mostly there is no such line, and nothing around needs to be asked.
  if (isWhole && !window.starts_with("--") && (window.empty() || findHyphenLine(window.data() + 1, end) == end))
    return false;
  BoundaryTable boundaries;
  for (const VoMsgEntity* up = entity.getParentEntity(); up; up = up->getParentEntity())
    if (up->isMultipartEntity()) {
      const std::string_view boundary = viewOf(up->getRawHeaderParameterValue("Content-Type", "boundary"));
      if (!boundary.empty()) boundaries.push(boundary);
    }
  return findBodyEnd(*reader, boundaries).match.type != kVoBoundaryNone;
}

// What ends the lines of a text, empty where the content is none, and what ends those that an encoding makes.
struct WantedLineEnds {
  std::string_view ofText;
  std::string_view ofEncoding;
};

// A copy of the text with every CR LF as LF; null, and `code`, on failure.
std::unique_ptr<VoMsgResourceLocator> withLineFeeds(const VoMsgResourceLocator& text, VoErrorCode& code) {
  std::unique_ptr<VoMsgResourceLocator> copy = temporaryResource(text.getSize(kData));
  if (!copy) {
    code = kVoNoMemory;
    return nullptr;
  }
  const std::unique_ptr<VoMsgBufferedReader> reader(text.getInputStream(kData));
  const std::unique_ptr<VoMsgBufferedWriter> writer(copy->getOutputStream(kData));
  code = reader || text.getSize(kData) == 0 ? kVoSuccess : kVoReadFailed;
  if (!writer) code = kVoWriteFailed;
  bool isOpen = false;  // a CR has come, and nothing behind it yet
  while (!voFailed(code) && reader && ReaderWindow::fill(*reader)) {
    const std::string_view window = ReaderWindow::buffered(*reader);
    std::string bytes(isOpen ? "\r" : "");
    bytes += window;
    isOpen = bytes.back() == '\r';
    if (isOpen) bytes.pop_back();
    bytes = withoutCrLf(bytes);
    if (!WriterAccess::writeThrough(*writer, bytes.data(), bytes.size())) code = kVoWriteFailed;
    ReaderWindow::consume(*reader, window.size());
  }
  if (!voFailed(code) && !((!isOpen || writer->write("\r", 1)) && writer->flush())) code = kVoWriteFailed;
  return voFailed(code) ? nullptr : std::move(copy);
}

// Decoding quoted-printable costs a byte of the end for each soft break that ends in a bare LF. Whether none is lost.
VoErrorCode survivesLineFeeds(const VoMsgResourceLocator& encoded, unsigned size, bool& isExact) {
  const std::unique_ptr<VoMsgBufferedReader> reader(encoded.getInputStream(kData));
  if (!reader) return encoded.getSize(kData) == 0 ? kVoSuccess : kVoReadFailed;
  unsigned decoded = 0;
  const VoErrorCode code = countDecoded(TransferEncoding::quotedPrintable, *reader, encoded.getSize(kData), decoded);
  isExact = decoded == size;
  return code;
}

// A resource with `content` encoded; null, and `code`, on failure. `isExact` says whether decoding gives it back, which
// BinHex cannot promise.
std::unique_ptr<VoMsgResourceLocator> encodedBody(TransferEncoding codec, const VoMsgResourceLocator& content,
                                                  const char* name, const WantedLineEnds& lines, VoErrorCode& code,
                                                  bool& isExact) {
  isExact = true;
  std::unique_ptr<VoMsgResourceLocator> body = temporaryResource(content.getSize(kData));
  if (!body) {
    code = kVoNoMemory;
    return nullptr;
  }
  body->setResourceName(content.getResourceName("us-ascii"), "us-ascii");
  const std::unique_ptr<VoMsgBufferedWriter> writer(body->getOutputStream(kData));
  if (!writer)
    code = kVoWriteFailed;
  else if (codec == TransferEncoding::binHex)
    code = encodeBinHex(*writer, content, name, &isExact);
  else
    code = encodeTransfer(codec, *writer, content, name, lines.ofText, lines.ofEncoding);
  if (!voFailed(code) && !writer->flush()) code = kVoWriteFailed;
  if (!voFailed(code) && codec == TransferEncoding::quotedPrintable && lines.ofEncoding == "\n")
    code = survivesLineFeeds(*body, content.getSize(kData), isExact);
  return voFailed(code) ? nullptr : std::move(body);
}

// An edit that succeeds in full or leaves no trace.
template <class Edit>
VoErrorCode editing(Edit&& edit) {
  return guarded([&] {
    EditUndos undos;
    return undos.settle(edit(undos));
  });
}

}  // namespace

// ---- getters

const VoMsgResourceLocator* VoMsgRfc822Entity::_getContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* content = target;
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    VoMsgSingleBody* const body = isMultipartEntity() ? nullptr : _singleBody();
    if (!body) return kVoNoContent;
    const OpenSource source(mMessageSource.getObject());
    return body->getContent(source.reader(), source.source(), getEncoding(), content);
  });
  err = static_cast<int>(code);
  return voFailed(code) ? nullptr : content;
}

const VoMsgResourceLocator* VoMsgRfc822Entity::_getRawContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* content = target;
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    VoMsgSingleBody* const body = isMultipartEntity() ? nullptr : _singleBody();
    if (!body) return kVoNoContent;
    const OpenSource source(mMessageSource.getObject());
    return body->getRawContent(source.reader(), source.source(), content);
  });
  err = static_cast<int>(code);
  return voFailed(code) ? nullptr : content;
}

// A text that cannot be converted is handed out as it is: text in a wrong charset is better than none.
const VoMsgResourceLocator* VoMsgRfc822Entity::_getTextContent(int& err, const VoMsgResourceLocator* target,
                                                               const char* charset) {
  const VoMsgResourceLocator* const content = _getContent(err, nullptr);
  if (!content) return nullptr;
  const VoMsgResourceLocator* result = content;
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    const TextCharset from = textCharsetOf(*this, content);
    const bool isWanted = charset && !voIsEqualCharsetName(from.name.c_str(), charset);
    VoMsgSingleBody& body = *_singleBody();
    const std::string conversion = isWanted ? from.name + '\n' + charset : std::string();
    if (const VoMsgResourceLocator* const kept = isWanted && !target ? body.getKeptText(conversion) : nullptr) {
      result = kept;
      return kVoSuccess;
    }
    const MessageSource* const source = mMessageSource.getObject();
    const DecodedScope scope(source ? source->budget() : nullptr);
    std::unique_ptr<VoMsgResourceLocator> converted;
    const VoErrorCode made = convertBody(*content, charset, isWanted ? from.name.c_str() : nullptr, target, converted);
    if (voFailed(made)) return made;
    if (target)
      result = target;
    else if (converted)
      result = body.keepText(std::move(converted), conversion);
    return kVoSuccess;
  });
  err = static_cast<int>(code);
  return voFailed(code) ? nullptr : result;
}

const VoMsgResourceLocator* VoMsgRfc822Entity::getContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* const content = isTargetRefused(*this, target, err) ? nullptr : _getContent(err, target);
  VO_LOGGED(_getUUIDString(), static_cast<VoErrorCode>(err));
  return content;
}

const VoMsgResourceLocator* VoMsgRfc822Entity::getRawContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* const content =
      isTargetRefused(*this, target, err) ? nullptr : _getRawContent(err, target);
  VO_LOGGED(_getUUIDString(), static_cast<VoErrorCode>(err));
  return content;
}

const VoMsgResourceLocator* VoMsgRfc822Entity::getTextContent(int& err, const VoMsgResourceLocator* target,
                                                              const char* charset) {
  const VoMsgResourceLocator* const content =
      isTargetRefused(*this, target, err) ? nullptr : _getTextContent(err, target, charset);
  VO_LOGGED(_getUUIDString(), static_cast<VoErrorCode>(err));
  return content;
}

unsigned VoMsgRfc822Entity::getContentSize() const {
  return guardedOr(0u, [&] {
    VoMsgSingleBody* const body = isMultipartEntity() ? nullptr : _singleBody();
    if (!body) return 0u;
    unsigned size = 0;
    const OpenSource source(mMessageSource.getObject());
    return voFailed(body->countContent(source.reader(), getEncoding(), size)) ? 0u : size;
  });
}

const char* VoMsgRfc822Entity::getTextCharset(CharsetOrigin& origin) {
  origin = CharsetOrigin::assumed;
  return guardedOr<const char*>("us-ascii", [&]() -> const char* {
    int err = 0;
    const TextCharset charset = textCharsetOf(*this, _getContent(err, nullptr));
    origin = charset.origin;
    VoMsgSingleBody* const body = _singleBody();
    return body ? body->keepTextCharset(charset.name) : "us-ascii";
  });
}

unsigned VoMsgRfc822Entity::getResourceSize(VoMsgResourceLocator* resource) {
  return resource ? resource->getSize(kData) : 0;
}

// ---- setters

VoErrorCode VoMsgRfc822Entity::_checkContentChange(VoMsgResourceLocator* content, const char* contentType,
                                                   const char* encoding) const {
  if (!content) return kVoBadArgument;
  if (isMultipartEntity() || startsWithNoCase(viewOf(contentType), "multipart/")) return kVoNoContent;
  return isKnownEncoding(encoding ? encoding : getEncoding()) ? kVoSuccess : kVoBadEncoding;
}

// Installs `content`, encoded as `encoding` says (null: as the entity declares) unless it is already. Nothing changes
// unless all of it succeeds. Base64 stands in for an encoding that cannot say the content: one that leaves a delimiter
// line of a multipart around the entity, which would end the part there, and BinHex where its run lengths are off.
// Where the encoding is not ours to choose, the boundaries around give way. In a message whose lines end in LF alone,
// those of a text do too, and those that an encoding makes; of other content nothing changes.
VoErrorCode VoMsgRfc822Entity::_setContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding,
                                           bool isEncoded, bool takeName, EditUndos& undos) {
  VoErrorCode code = _checkContentChange(content, contentType, encoding);
  if (voFailed(code)) return code;
  const TransferEncoding codec =
      isEncoded ? TransferEncoding::identity : transferEncodingOf(encoding ? encoding : getEncoding());
  const char* const ownName = takeName && *content->getResourceName(nullptr) ? nullptr : getFileName("utf-8");
  const bool isText = isTextType(contentType ? contentType : getContentType());
  const std::string_view lineEnd = _textLineEnd();
  const WantedLineEnds lines{isText ? lineEnd : "", lineEnd};
  const VoMsgResourceLocator* text = content;
  std::unique_ptr<VoMsgResourceLocator> turned;
  if (isText && lineEnd == "\n" && !isEncoded && codec != TransferEncoding::binHex && !voIsUnicode(getCharset())) {
    turned = withLineFeeds(*content, code);
    if (!turned) return code;
    turned->setResourceName(content->getResourceName("us-ascii"), "us-ascii");
    text = turned.get();
  }
  bool isExact = true;
  std::unique_ptr<VoMsgResourceLocator> body = encodedBody(codec, *text, ownName, lines, code, isExact);
  if (body && !isEncoded && codec != TransferEncoding::base64 && (!isExact || holdsDelimiter(*body, *this))) {
    encoding = "base64";
    body = encodedBody(TransferEncoding::base64, *text, nullptr, lines, code, isExact);
  }
  if (!body) return code;
  const bool clashes = isEncoded && holdsDelimiter(*body, *this);
  undos.add(*this, true);
  code = _describeContent(content, contentType, encoding, takeName);
  if (voFailed(code)) return code;
  static_cast<VoMsgSingleBody*>(_createEntityBody(false))->setNewContent(std::move(body));
  auto* const around = clashes ? dynamic_cast<VoMsgRfc822Entity*>(getParentEntity()) : nullptr;
  return around ? around->_separateBoundaries(this, undos) : kVoSuccess;
}

// Sets a parameter of a field that is there, unless it says the same already.
VoErrorCode VoMsgRfc822Entity::_setParameterIfChanged(const char* name, const char* param, const char* value,
                                                      const char* charset) {
  if (isAscii(value)) charset = "us-ascii";
  const char* const present = getHeaderParameterValue(name, param, charset);
  if (present && std::string_view(present) == value) return kVoSuccess;
  return setHeaderParameterValue(name, param, value, charset, nullptr);
}

// Brings the header block in line with new content; fields that say the right thing already are left alone.
VoErrorCode VoMsgRfc822Entity::_describeContent(VoMsgResourceLocator* content, const char* contentType,
                                                const char* encoding, bool takeName) {
  if (contentType && !equalNoCase(viewOf(getContentType()), contentType) &&
      voFailed(setHeaderValue("Content-Type", contentType, "us-ascii", nullptr)))
    return kVoContentHeaderFailed;
  const bool isText = isTextType(getContentType());
  if (VoMsgHeaderField* const field = contentType ? getHeader("Content-Type") : nullptr) {
    if (!isText && (field->getRawParameterValue("charset") || field->hasRFC2231("charset")))
      field->removeParameter("charset");
    if (field->getRawParameterValue("boundary") || field->hasRFC2231("boundary")) field->removeParameter("boundary");
  }
  const char* const declared = getEncoding();
  if (encoding && !(declared && equalNoCase(declared, encoding)) &&
      voFailed(setHeaderValue("Content-Transfer-Encoding", encoding, "us-ascii", nullptr)))
    return kVoEncodingHeaderFailed;
  const char* const name = takeName ? content->getResourceName("utf-8") : "";
  if (!*name) return kVoSuccess;
  if (getHeader("Content-Type") && voFailed(_setParameterIfChanged("Content-Type", "name", name, "utf-8")))
    return kVoContentHeaderFailed;
  if (!getHeader("Content-Disposition")) {
    if (isText) return kVoSuccess;  // shown, not saved
    if (voFailed(setHeaderValue("Content-Disposition", "attachment", "us-ascii", nullptr)))
      return kVoContentHeaderFailed;
  }
  return voFailed(_setParameterIfChanged("Content-Disposition", "filename", name, "utf-8")) ? kVoContentHeaderFailed
                                                                                            : kVoSuccess;
}

// The text goes into the declared charset when that loses nothing; otherwise it stays as it is, and `charset` is
// declared. UTF-16 and UTF-32, of which no line of mail can be made, become UTF-8. A transfer encoding is kept when it
// can say any text, else the text decides.
VoErrorCode VoMsgRfc822Entity::_setTextContent(VoMsgResourceLocator* content, const char* contentType,
                                               const char* charset, VoMsgReplaceOption option, EditUndos& undos) {
  if (!content) return kVoBadArgument;
  if (isMultipartEntity() || startsWithNoCase(viewOf(contentType), "multipart/")) return kVoNoContent;
  std::string label(viewOf(getCharset()));
  std::string source = charset ? charset : label;
  const std::string readAs = voIsUnicode(source.c_str()) ? "utf-8" : source;
  if (voIsUnicode(label.c_str())) label = "utf-8";
  MailText text;
  const bool isOther = !readAs.empty() && !voIsEqualCharsetName(readAs.c_str(), label.c_str());
  VoErrorCode made = kVoConversionFailed;
  if (isOther && option != kVoReplaceUseCharset)
    made = makeMailText(*content, source.c_str(), label.empty() ? "us-ascii" : label.c_str(), text);
  if (made == kVoConversionFailed) {
    made = makeMailText(*content, source.c_str(), nullptr, text);
    if (isOther) label = readAs;
  }
  if (voFailed(made)) return made;
  const TransferEncoding present = transferEncodingOf(getEncoding());
  const char* encoding = nullptr;
  if (present != TransferEncoding::base64 && present != TransferEncoding::quotedPrintable) {
    const bool isDeclared = getEncoding() != nullptr;
    encoding = !text.isMail ? "quoted-printable" : isDeclared ? "7bit" : nullptr;
  }
  const char* type = contentType;
  if (!type && !getContentType()) type = "text/plain";
  const VoErrorCode installed = _setContent(text.bytes.get(), type, encoding, false, false, undos);
  if (voFailed(installed) || label.empty() || label == viewOf(getCharset())) return installed;
  return voFailed(setHeaderParameterValue("Content-Type", "charset", label.c_str(), "us-ascii", nullptr))
             ? kVoContentParameterFailed
             : kVoSuccess;
}

VoErrorCode VoMsgRfc822Entity::setContent(VoMsgResourceLocator* content, const char* contentType,
                                          const char* encoding) {
  const VoErrorCode code =
      editing([&](EditUndos& undos) { return _setContent(content, contentType, encoding, false, true, undos); });
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgRfc822Entity::setRawContent(VoMsgResourceLocator* content, const char* contentType,
                                             const char* encoding) {
  const VoErrorCode code =
      editing([&](EditUndos& undos) { return _setContent(content, contentType, encoding, true, true, undos); });
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgRfc822Entity::setTextContent(VoMsgResourceLocator* content, const char* contentType,
                                              const char* charset) {
  const VoErrorCode code = editing(
      [&](EditUndos& undos) { return _setTextContent(content, contentType, charset, kVoReplaceKeepCharset, undos); });
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgRfc822Entity::replaceContent(VoMsgResourceLocator* content, const char* encoding) {
  const VoErrorCode code =
      editing([&](EditUndos& undos) { return _setContent(content, nullptr, encoding, false, false, undos); });
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgRfc822Entity::replaceTextContent(VoMsgResourceLocator* content, const char* charset,
                                                  VoMsgReplaceOption option) {
  const VoErrorCode code =
      editing([&](EditUndos& undos) { return _setTextContent(content, nullptr, charset, option, undos); });
  return VO_LOGGED(_getUUIDString(), code);
}

VoErrorCode VoMsgRfc822Entity::setAttachment(VoMsgResourceLocator* content) {
  const VoErrorCode code = editing([&](EditUndos& undos) -> VoErrorCode {
    const VoErrorCode installed =
        _setContent(content, getContentType() ? nullptr : "application/octet-stream", "base64", false, true, undos);
    if (voFailed(installed) || equalNoCase(viewOf(getRawHeaderValue("Content-Disposition")), "attachment"))
      return installed;
    return voFailed(setHeaderValue("Content-Disposition", "attachment", "us-ascii", nullptr)) ? kVoContentHeaderFailed
                                                                                              : kVoSuccess;
  });
  return VO_LOGGED(_getUUIDString(), code);
}
