// Disclaimers beside the content: as a body of their own, as an attachment, or around the message, which becomes an
// attachment itself, byte for byte. Every part is made before the message changes.

#include <memory>
#include <new>
#include <string>

#include "vomsg/edit/VoMsgContentEditor.h"
#include "vomsg/edit/VoMsgDisclaimerText.h"
#include "vomsg/edit/VoMsgTextEncoding.h"
#include "vomsg/entity/VoMsgEditUndo.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/entity/VoMsgTreeAccess.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgRangeResource.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"
#include "vomsg/foundation/VoMsgResourceManager.h"

namespace {

using namespace vomsg::detail;

constexpr char kLogSource[] = "VoMsgRfc822Message";
constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;
constexpr char kAscii[] = "us-ascii";

// What remains of the header when the message is wrapped under a fresh one: who, to whom, when, about what.
constexpr std::string_view kKeptFields[] = {"Return-Path", "Received",   "From",        "Sender", "Reply-To",
                                            "To",          "Cc",         "Subject",     "Date",   "Message-ID",
                                            "In-Reply-To", "References", "MIME-Version"};

// Sets header values in a row; the first failure stays.
class PartHeader {
 public:
  explicit PartHeader(VoMsgEntity& part) : mPart(part) {}
  PartHeader& value(const char* name, const char* text) {
    if (!voFailed(code)) code = mPart.setHeaderValue(name, text, kAscii, nullptr);
    return *this;
  }
  PartHeader& parameter(const char* name, const char* param, const char* text) {
    if (!voFailed(code)) code = mPart.setHeaderParameterValue(name, param, text, kAscii, nullptr);
    return *this;
  }
  VoErrorCode code = kVoSuccess;

 private:
  VoMsgEntity& mPart;
};

// The disclaimer as a text part. A text that `preferCharset` cannot say goes out in UTF-8; one that nobody could
// decode goes out as it came, under the charset that the caller named.
VoErrorCode createDisclaimerPart(VoMsgRfc822Message& message, VoMsgResourceLocator& resource, const char* srcCharset,
                                 const char* preferCharset, const char* fileName,
                                 std::unique_ptr<VoMsgMimeEntity>& part) {
  Disclaimer disclaimer;
  VoErrorCode code = loadDisclaimer(resource, srcCharset, false, disclaimer);
  if (voFailed(code)) return code;
  const std::string_view lineEnd = ContentEditor(message).lineEnd();
  const char* charset = srcCharset;
  std::string text = disclaimer.raw;
  if (disclaimer.isDecoded) {
    if (!disclaimer.utf8.empty() && !endsLine(disclaimer.utf8)) disclaimer.utf8 += "\r\n";
    if (lineEnd == "\n") disclaimer.utf8 = withoutCrLf(disclaimer.utf8);
    charset = preferCharset;
    if (!encodeExactly(disclaimer.utf8, charset, text)) {
      charset = "utf-8";
      text = disclaimer.utf8;
    }
  }
  EncodedText content;
  // Bytes that are no text for anybody here must not be taken for lines.
  const BoundaryTable delimiters = delimitersAround(message);
  if (!encodeForTransfer(text, {disclaimer.isDecoded ? nullptr : "base64", lineEnd, delimiters}, content))
    return kVoDisclaimerCopyFailed;
  if (!content.encoding) content.encoding = disclaimer.isDecoded ? "7bit" : "base64";

  auto made = std::make_unique<VoMsgMimeEntity>();
  PartHeader header(*made);
  header.value("Content-Type", "text/plain").parameter("Content-Type", "charset", charset);
  if (fileName) {
    header.parameter("Content-Type", "name", fileName).value("Content-Disposition", "attachment");
    header.parameter("Content-Disposition", "filename", fileName);
  } else {
    header.value("Content-Disposition", "inline");
  }
  if (voFailed(header.code)) return header.code;
  VoMsgMemoryResource encoded(content.bytes.data(), static_cast<unsigned>(content.bytes.size()), nullptr, nullptr);
  code = made->setRawContent(&encoded, nullptr, content.encoding);
  if (!voFailed(code)) part = std::move(made);
  return code;
}

// What the bytes of a message need where they stand unencoded, as they must in a message/rfc822 part.
VoErrorCode encodingFor(const VoMsgResourceLocator& resource, const char*& encoding) {
  constexpr unsigned kLongestLine = 998;
  const std::unique_ptr<VoMsgBufferedReader> reader(resource.getInputStream(kData));
  if (!reader) return kVoReadFailed;
  encoding = "7bit";
  std::string block(32768, '\0');
  unsigned lineLength = 0;
  while (const unsigned n = reader->read(block.data(), static_cast<unsigned>(block.size()))) {
    for (const char c : std::string_view(block.data(), n)) {
      if (isLineEnd(c)) {
        lineLength = 0;
        continue;
      }
      if (c == '\0' || ++lineLength > kLongestLine) {
        encoding = "binary";
        return kVoSuccess;
      }
      if (static_cast<unsigned char>(c) >= 0x80) encoding = "8bit";
    }
  }
  return kVoSuccess;
}

// A multipart declares at least what its parts need (RFC 2045, section 6.4). Null: nothing.
const char* encodingOfMultipart(const char* partEncoding) {
  for (const char* name : {"8bit", "binary"})
    if (equalNoCase(viewOf(partEncoding), name)) return name;
  return nullptr;
}

bool isKept(std::string_view name, bool onlyEssentials) {
  if (!onlyEssentials) return !startsWithNoCase(name, "content-");
  for (const std::string_view kept : kKeptFields)
    if (equalNoCase(name, kept)) return true;
  return false;
}

void appendField(VoMsgEntityHeader& header, std::unique_ptr<VoMsgHeaderField> field) {
  if (!field || voFailed(header._moveHeader(field.get()))) throw std::bad_alloc();
  static_cast<void>(field.release());
}

// The header block around the wrapped message; fields that nobody changed are written as such.
std::unique_ptr<VoMsgEntityHeader> outerHeader(const VoMsgEntityHeader& inner, bool onlyEssentials,
                                               const char* encoding) {
  auto outer = std::make_unique<VoMsgEntityHeader>();
  outer->setChild(inner.isChild());
  for (unsigned i = 0; i < inner.countHeaders(); ++i) {
    const VoMsgHeaderField& field = *inner.getHeaderAt(i);
    if (!isKept(viewOf(field.getName()), onlyEssentials)) continue;
    std::unique_ptr<VoMsgHeaderField> copy(field.newCopy());
    VoMsgHeaderField* const appended = copy.get();
    appendField(*outer, std::move(copy));
    appended->setNewHeader(field.isNewHeader());
  }
  if (!outer->getHeader("MIME-Version")) appendField(*outer, std::make_unique<VoMsgHeaderField>("MIME-Version", "1.0"));
  if (encoding) appendField(*outer, std::make_unique<VoMsgHeaderField>("Content-Transfer-Encoding", encoding));
  return outer;
}

}  // namespace

// The message as it is now, in a resource of its own: its source in place when nobody edited it.
VoErrorCode VoMsgRfc822Message::_copyOriginalMessage(std::unique_ptr<VoMsgResourceLocator>& original) {
  if (VoMsgResourceLocator* const source = mSource.getObject(); source && mMessageSource.getObject() && !isModified()) {
    original =
        std::make_unique<RangeResource>(mSource, mMessageSource.getObject()->wholeState(), 0, source->getSize(kData));
    return kVoSuccess;
  }
  original.reset(VoMsgResourceManager::createTmpResource(0));
  if (!original) return kVoNoMemory;
  const std::unique_ptr<VoMsgBufferedWriter> writer(original->getOutputStream(kData));
  if (!writer) return kVoWriteFailed;
  const VoErrorCode code = _writeToResource(writer.get());
  return voFailed(code) || writer->flush() ? code : kVoWriteFailed;
}

VoErrorCode VoMsgRfc822Message::_createWrapRfc822MailEntity(std::unique_ptr<VoMsgMimeEntity>& part) {
  std::unique_ptr<VoMsgResourceLocator> original;
  VoErrorCode code = _copyOriginalMessage(original);
  if (voFailed(code)) return code;
  const std::uint32_t size = original->getSize(kData);
  const char* encoding = nullptr;
  code = encodingFor(*original, encoding);
  if (voFailed(code)) return code;

  auto made = std::make_unique<VoMsgMimeEntity>();
  PartHeader header(*made);
  header.value("Content-Type", "message/rfc822").parameter("Content-Type", "name", "originalmail.eml");
  header.value("Content-Transfer-Encoding", encoding).value("Content-Disposition", "attachment");
  header.parameter("Content-Disposition", "filename", "originalmail.eml");
  if (voFailed(header.code)) return header.code;
  auto nested = std::make_unique<VoMsgRfc822Message>(&getUUID());
  code = nested->readFrom(original.release());
  if (code == kVoNoMemory || code == kVoReadFailed) return code;  // a malformed message is wrapped as it is
  ContentEditor(*made).holdMessage(std::move(nested), size);
  part = std::move(made);
  return kVoSuccess;
}

VoErrorCode VoMsgRfc822Message::_createWrapEntity(VoMsgResourceLocator* disclaimer, const char* srcCharset,
                                                  const char* preferCharset, bool onlyEssentials) {
  if (!disclaimer || !srcCharset) return kVoBadArgument;
  EditUndos undos;
  std::unique_ptr<VoMsgMimeEntity> text;
  VoErrorCode code =
      createDisclaimerPart(*this, *disclaimer, srcCharset, preferCharset ? preferCharset : "utf-8", nullptr, text);
  if (voFailed(code)) return code;
  std::unique_ptr<VoMsgMimeEntity> original;
  code = _createWrapRfc822MailEntity(original);
  if (voFailed(code)) return code;

  auto header = outerHeader(_header(), onlyEssentials, encodingOfMultipart(original->getEncoding()));
  if (voFailed(ContentEditor(*this).makeMultipart(std::move(header), undos))) return kVoWrapFailed;
  TreeAccess::append(this, text.release());
  TreeAccess::append(this, original.release());
  return kVoSuccess;
}

// The former content, whatever it was, and the disclaimer become the parts of a new multipart.
VoErrorCode VoMsgRfc822Message::_addDisclaimerPart(bool inFront, bool asAttachment, VoMsgResourceLocator* disclaimer,
                                                   const char* srcCharset, const char* preferCharset) {
  if (!disclaimer || !srcCharset) return kVoBadArgument;
  EditUndos undos;
  std::unique_ptr<VoMsgMimeEntity> text;
  VoErrorCode code = createDisclaimerPart(*this, *disclaimer, srcCharset, preferCharset ? preferCharset : "utf-8",
                                          asAttachment ? "disclaimer.txt" : nullptr, text);
  if (voFailed(code)) return code;
  const char* const encoding = encodingOfMultipart(getEncoding());
  undos.add(*this);
  code = ContentEditor(*this).moveContentToPart();
  if (!voFailed(code) && encoding) code = setHeaderValue("Content-Transfer-Encoding", encoding, kAscii, nullptr);
  code = undos.settle(code);
  if (voFailed(code)) return code;
  TreeAccess::insertAt(this, text.release(), inFront ? 0 : countChildEntity());
  return kVoSuccess;
}

VoErrorCode VoMsgRfc822Message::_newDisclaimerMessage(VoMsgDisclaimerPosition_e position,
                                                      VoMsgResourceLocator* disclaimer, const char* srcCharset,
                                                      const char* preferCharset) {
  VO_LOG(9, _getUUIDString(), "begin: _newDisclaimerMessage");
  const VoErrorCode code = guarded(
      [&] { return _addDisclaimerPart(position == kVoDisclaimerTop, false, disclaimer, srcCharset, preferCharset); });
  VO_LOG(9, _getUUIDString(), "end  : _newDisclaimerMessage");
  return code;
}

VoErrorCode VoMsgRfc822Message::_wrapDisclaimerMessage(VoMsgDisclaimerPosition_e, VoMsgResourceLocator* disclaimer,
                                                       const char* srcCharset, const char* preferCharset) {
  VO_LOG(9, _getUUIDString(), "begin: _wrapDisclaimerMessage");
  const VoErrorCode code = guarded([&] { return _createWrapEntity(disclaimer, srcCharset, preferCharset, false); });
  VO_LOG(9, _getUUIDString(), "end  : _wrapDisclaimerMessage");
  return code;
}

VoErrorCode VoMsgRfc822Message::_wrapNewDisclaimerMessage(VoMsgDisclaimerPosition_e, VoMsgResourceLocator* disclaimer,
                                                          const char* srcCharset, const char* preferCharset) {
  VO_LOG(9, _getUUIDString(), "begin: _wrapNewDisclaimerMessage");
  const VoErrorCode code = guarded([&] { return _createWrapEntity(disclaimer, srcCharset, preferCharset, true); });
  VO_LOG(9, _getUUIDString(), "end  : _wrapNewDisclaimerMessage");
  return code;
}

VoErrorCode VoMsgRfc822Message::_DisclaimerMessageAttachment(VoMsgDisclaimerPosition_e,
                                                             VoMsgResourceLocator* disclaimer, const char* srcCharset,
                                                             const char* preferCharset) {
  VO_LOG(9, _getUUIDString(), "begin: _DisclaimerMessageAttachment");
  const VoErrorCode code =
      guarded([&] { return _addDisclaimerPart(false, true, disclaimer, srcCharset, preferCharset); });
  VO_LOG(9, _getUUIDString(), "end  : _DisclaimerMessageAttachment");
  return code;
}
