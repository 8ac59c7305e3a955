// The content of a MIME entity: decoded, raw or as text in a charset; and the setters, which encode at once into a
// resource of the library's own and then bring the header block in line.

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"
#include "vomsg/entity/VoMsgMessageSource.h"
#include "vomsg/entity/VoMsgMultipartBody.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/entity/VoMsgSingleBody.h"
#include "vomsg/entity/VoMsgTextCharset.h"
#include "vomsg/entity/VoMsgTransferEncoding.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceManager.h"

namespace {

using namespace vomsg::detail;

constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;
constexpr std::size_t kLongestLine = 998;  // RFC 5322, section 2.1.1

struct ConverterReturn {
  void operator()(VoMsgCharsetConverter* converter) const {
    VoMsgConverterFactory::getInstance()->destoryConverter(converter);
  }
};
using Converter = std::unique_ptr<VoMsgCharsetConverter, ConverterReturn>;

Converter makeConverter(const char* to, const char* from, bool substitute) {
  return Converter(VoMsgConverterFactory::getInstance()->createConverter(to, from, substitute ? 1 : 0, '?'));
}

// Converters take a NUL for the end of the text; a body may hold some all the same, so it goes through piece by piece.
bool convertText(VoMsgCharsetConverter& converter, std::string_view text, std::string& out) {
  out.clear();
  std::string piece;
  std::string converted;
  while (true) {
    const std::size_t nul = text.find('\0');
    piece.assign(text.substr(0, nul));
    if (voFailed(converter.convert(converted, piece))) return false;
    out += converted;
    if (nul == text.npos) return true;
    out += '\0';
    text.remove_prefix(nul + 1);
  }
}

bool readAll(const VoMsgResourceLocator& resource, std::string& text) {
  const std::unique_ptr<VoMsgBufferedReader> reader(resource.getInputStream(kData));
  text.resize(resource.getSize(kData));
  if (!reader) return text.empty();
  text.resize(reader->read(text.data(), static_cast<unsigned>(text.size())));
  return true;
}

VoErrorCode writeAll(const VoMsgResourceLocator& target, std::string_view text) {
  const std::unique_ptr<VoMsgBufferedWriter> writer(target.getOutputStream(kData));
  if (!writer) return kVoWriteFailed;
  return writer->write(text.data(), static_cast<unsigned>(text.size())) && writer->flush() ? kVoSuccess
                                                                                           : kVoWriteFailed;
}

std::unique_ptr<VoMsgResourceLocator> temporaryResource(std::uint64_t size) {
  return std::unique_ptr<VoMsgResourceLocator>(
      VoMsgResourceManager::createTmpResource(static_cast<unsigned>(std::clamp<std::uint64_t>(size, 1, 0xFFFFFFFFu))));
}

bool isAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

bool isMailText(std::string_view text) {
  if (!isAscii(text) || text.find('\0') != text.npos) return false;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    if (std::min(end, text.size()) > kLongestLine + 1) return false;
    if (end == text.npos) break;
    text.remove_prefix(end + 1);
  }
  return true;
}

// The text of `resource` with every line end as CR LF.
VoErrorCode readText(const VoMsgResourceLocator& resource, std::string& text) {
  std::string raw;
  if (!readAll(resource, raw)) return kVoReadFailed;
  text.clear();
  text.reserve(raw.size() + raw.size() / 16);
  std::string_view rest = raw;
  while (!rest.empty()) {
    const std::size_t end = rest.find_first_of("\r\n");
    text += rest.substr(0, end);
    if (end == rest.npos) break;
    text += "\r\n";
    const bool pair = rest[end] == '\r' && end + 1 < rest.size() && rest[end + 1] == '\n';
    rest.remove_prefix(end + (pair ? 2 : 1));
  }
  return kVoSuccess;
}

}  // namespace

// ---- getters

const VoMsgResourceLocator* VoMsgRfc822Entity::_getContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* content = target;
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    VoMsgSingleBody* const body = isMultipartEntity() ? nullptr : _singleBody();
    if (!body) return kVoNoContent;
    const OpenSource source(mMessageSource.getObject());
    return body->getContent(source.reader(), getEncoding(), content);
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
    return body->getRawContent(source.reader(), content);
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
    std::string text;
    std::string converted;
    const TextCharset from = textCharsetOf(*this, content);
    bool isConverted = false;
    if (charset && !voIsEqualCharsetName(from.name.c_str(), charset)) {
      const Converter converter = makeConverter(charset, from.name.c_str(), true);
      isConverted = converter && readAll(*content, text) && convertText(*converter, text, converted);
    }
    if (!target && !isConverted) return kVoSuccess;
    if (!isConverted && !readAll(*content, converted)) return kVoReadFailed;
    if (target) {
      result = target;
      return writeAll(*target, converted);
    }
    std::unique_ptr<VoMsgResourceLocator> kept = temporaryResource(converted.size());
    if (!kept) return kVoWriteFailed;
    const VoErrorCode written = writeAll(*kept, converted);
    if (!voFailed(written)) result = _singleBody()->keepText(std::move(kept));
    return written;
  });
  err = static_cast<int>(code);
  return voFailed(code) ? nullptr : result;
}

const VoMsgResourceLocator* VoMsgRfc822Entity::getContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* const content = _getContent(err, target);
  if (!content) _failed(__func__, __LINE__, static_cast<VoErrorCode>(err));
  return content;
}

const VoMsgResourceLocator* VoMsgRfc822Entity::getRawContent(int& err, const VoMsgResourceLocator* target) {
  const VoMsgResourceLocator* const content = _getRawContent(err, target);
  if (!content) _failed(__func__, __LINE__, static_cast<VoErrorCode>(err));
  return content;
}

const VoMsgResourceLocator* VoMsgRfc822Entity::getTextContent(int& err, const VoMsgResourceLocator* target,
                                                              const char* charset) {
  const VoMsgResourceLocator* const content = _getTextContent(err, target, charset);
  if (!content) _failed(__func__, __LINE__, static_cast<VoErrorCode>(err));
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
// before the new body is complete.
VoErrorCode VoMsgRfc822Entity::_setContent(VoMsgResourceLocator* content, const char* contentType, const char* encoding,
                                           bool isEncoded, bool takeName) {
  const VoErrorCode checked = _checkContentChange(content, contentType, encoding);
  if (voFailed(checked)) return checked;
  const TransferEncoding codec =
      isEncoded ? TransferEncoding::identity : transferEncodingOf(encoding ? encoding : getEncoding());
  std::unique_ptr<VoMsgResourceLocator> body = temporaryResource(content->getSize(kData));
  if (!body) return kVoNoMemory;
  body->setResourceName(content->getResourceName("us-ascii"), "us-ascii");
  {
    const std::unique_ptr<VoMsgBufferedWriter> writer(body->getOutputStream(kData));
    if (!writer) return kVoWriteFailed;
    const char* const ownName = takeName && *content->getResourceName(nullptr) ? nullptr : getFileName("utf-8");
    const VoErrorCode encoded = encodeTransfer(codec, *writer, *content, ownName);
    if (voFailed(encoded)) return encoded;
    if (!writer->flush()) return kVoWriteFailed;
  }
  const VoErrorCode described = _describeContent(content, contentType, encoding, takeName);
  if (voFailed(described)) return described;
  _freeTree();
  static_cast<VoMsgSingleBody*>(_createEntityBody(false))->setNewContent(std::move(body));
  return kVoSuccess;
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
  const bool isText = !getContentType() || startsWithNoCase(getContentType(), "text/");
  if (VoMsgHeaderField* const field = contentType ? getHeader("Content-Type") : nullptr) {
    if (!isText && (field->getRawParameterValue("charset") || field->hasRFC2231("charset")))
      field->removeParameter("charset");
    if (field->getRawParameterValue("boundary")) field->removeParameter("boundary");
  }
  const char* const declared = getEncoding();
  if (encoding && !(declared && equalNoCase(declared, encoding)) &&
      voFailed(setHeaderValue("Content-Transfer-Encoding", encoding, "us-ascii", nullptr)))
    return kVoEncodingHeaderFailed;
  const char* const name = takeName ? content->getResourceName("utf-8") : "";
  if (!*name) return kVoSuccess;
  const bool hasDisposition = getHeader("Content-Disposition") != nullptr;
  if (!hasDisposition && isText) return kVoSuccess;
  if (getHeader("Content-Type") && voFailed(_setParameterIfChanged("Content-Type", "name", name, "utf-8")))
    return kVoContentHeaderFailed;
  if (hasDisposition && voFailed(_setParameterIfChanged("Content-Disposition", "filename", name, "utf-8")))
    return kVoContentHeaderFailed;
  return kVoSuccess;
}

// The text goes into the declared charset when that loses nothing; otherwise it stays as it is, and `charset` is
// declared. A transfer encoding is kept when it can say any text, else the text decides.
VoErrorCode VoMsgRfc822Entity::_setTextContent(VoMsgResourceLocator* content, const char* contentType,
                                               const char* charset, VoMsgReplaceOption option) {
  if (!content) return kVoBadArgument;
  if (isMultipartEntity() || startsWithNoCase(viewOf(contentType), "multipart/")) return kVoNoContent;
  std::string text;
  const VoErrorCode code = readText(*content, text);
  if (voFailed(code)) return code;
  const std::string declared(viewOf(getCharset()));
  std::string label = declared;
  if (charset && !voIsEqualCharsetName(charset, declared.c_str())) {
    std::string converted;
    const char* const target = declared.empty() ? "us-ascii" : declared.c_str();
    const Converter converter = option == kVoReplaceUseCharset ? nullptr : makeConverter(target, charset, false);
    if (converter && convertText(*converter, text, converted))
      text = std::move(converted);
    else
      label = charset;
  }
  const TransferEncoding present = transferEncodingOf(getEncoding());
  const char* encoding = nullptr;
  if (present != TransferEncoding::base64 && present != TransferEncoding::quotedPrintable) {
    const bool isDeclared = getEncoding() != nullptr;
    encoding = !isMailText(text) ? "quoted-printable" : isDeclared ? "7bit" : nullptr;
  }
  VoMsgMemoryResource converted(text.data(), static_cast<unsigned>(text.size()), nullptr, nullptr);
  const char* type = contentType;
  if (!type && !getContentType()) type = "text/plain";
  const VoErrorCode installed = _setContent(&converted, type, encoding, false, false);
  if (voFailed(installed) || label.empty() || label == viewOf(getCharset())) return installed;
  return voFailed(setHeaderParameterValue("Content-Type", "charset", label.c_str(), "us-ascii", nullptr))
             ? kVoContentParameterFailed
             : kVoSuccess;
}

VoErrorCode VoMsgRfc822Entity::setContent(VoMsgResourceLocator* content, const char* contentType,
                                          const char* encoding) {
  const VoErrorCode code = guarded([&] { return _setContent(content, contentType, encoding, false, true); });
  return voFailed(code) ? _failed(__func__, __LINE__, code) : code;
}

VoErrorCode VoMsgRfc822Entity::setRawContent(VoMsgResourceLocator* content, const char* contentType,
                                             const char* encoding) {
  const VoErrorCode code = guarded([&] { return _setContent(content, contentType, encoding, true, true); });
  return voFailed(code) ? _failed(__func__, __LINE__, code) : code;
}

VoErrorCode VoMsgRfc822Entity::setTextContent(VoMsgResourceLocator* content, const char* contentType,
                                              const char* charset) {
  const VoErrorCode code =
      guarded([&] { return _setTextContent(content, contentType, charset, kVoReplaceKeepCharset); });
  return voFailed(code) ? _failed(__func__, __LINE__, code) : code;
}

VoErrorCode VoMsgRfc822Entity::replaceContent(VoMsgResourceLocator* content, const char* encoding) {
  const VoErrorCode code = guarded([&] { return _setContent(content, nullptr, encoding, false, false); });
  return voFailed(code) ? _failed(__func__, __LINE__, code) : code;
}

VoErrorCode VoMsgRfc822Entity::replaceTextContent(VoMsgResourceLocator* content, const char* charset,
                                                  VoMsgReplaceOption option) {
  const VoErrorCode code = guarded([&] { return _setTextContent(content, nullptr, charset, option); });
  return voFailed(code) ? _failed(__func__, __LINE__, code) : code;
}

VoErrorCode VoMsgRfc822Entity::setAttachment(VoMsgResourceLocator* content) {
  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    const VoErrorCode checked = _checkContentChange(content, nullptr, "base64");
    if (voFailed(checked)) return checked;
    if (!equalNoCase(viewOf(getRawHeaderValue("Content-Disposition")), "attachment") &&
        voFailed(setHeaderValue("Content-Disposition", "attachment", "us-ascii", nullptr)))
      return kVoContentHeaderFailed;
    return _setContent(content, getContentType() ? nullptr : "application/octet-stream", "base64", false, true);
  });
  return voFailed(code) ? _failed(__func__, __LINE__, code) : code;
}
