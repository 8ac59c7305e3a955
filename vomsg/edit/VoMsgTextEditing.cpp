#include "vomsg/edit/VoMsgTextEditing.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/edit/VoMsgContentEditor.h"
#include "vomsg/entity/VoMsgTextCharset.h"
#include "vomsg/entity/VoMsgTransferEncoding.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgOptions.h"

namespace vomsg::detail {

namespace {

constexpr std::size_t kLongestLine = 998;    // RFC 5322, section 2.1.1
constexpr std::size_t kLongestEncoded = 75;  // of a quoted-printable line, before the "=" of a soft break
constexpr char kQuotedPrintable[] = "quoted-printable";
constexpr char kBase64[] = "base64";

bool hasLongLine(std::string_view text) {
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::size_t terminator = end > begin && end < text.size() && text[end - 1] == '\r' ? 1 : 0;
    if (end - begin - terminator > kLongestLine) return true;
    begin = end + 1;
  }
  return false;
}

bool fitsUnencoded(std::string_view text, const char* encoding) {
  if (hasLongLine(text)) return false;
  if (equalNoCase(viewOf(encoding), "binary")) return true;
  if (text.find('\0') != text.npos) return false;
  return equalNoCase(viewOf(encoding), "8bit") || isAscii(text);
}

// Unlike the codec, which takes text for lines and ends each with CR LF, this keeps every byte: line ends stay what
// they are, and a last line without one stays open.
std::string quotedPrintable(std::string_view text) {
  constexpr char kHex[] = "0123456789ABCDEF";
  const bool encodeDot = (VoMsgExtraOption & kVoOptionEncodeDot) != 0;
  std::string out;
  out.reserve(text.size() + text.size() / 8);
  std::size_t column = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool isPair = text.substr(i, 2) == "\r\n";
    if (isPair || c == '\n') {
      out += isPair ? "\r\n" : "\n";
      i += isPair ? 1 : 0;
      column = 0;
      continue;
    }
    const bool endsHere = i + 1 == text.size() || isLineEnd(text[i + 1]);
    const bool isPlain = isBlank(c) ? !endsHere : c > ' ' && c < 0x7F && c != '=' && !(c == '.' && encodeDot);
    if (column + (isPlain ? 1 : 3) > kLongestEncoded) {
      out += "=\r\n";
      column = 0;
    }
    if (isPlain) {
      out += c;
      ++column;
    } else {
      out += {'=', kHex[static_cast<unsigned char>(c) >> 4], kHex[c & 15]};
      column += 3;
    }
  }
  return out;
}

bool decodesTo(std::string_view encoded, TransferEncoding encoding, std::string_view text) {
  std::string block(encoded);
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(block.data()), static_cast<unsigned>(block.size()));
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  std::string decoded;
  return reader.open() &&
         !voFailed(decodeTransfer(encoding, target, reader, static_cast<std::uint32_t>(block.size()))) &&
         !voFailed(readBytes(target, decoded)) && decoded == text;
}

bool encodeBase64Text(std::string_view text, std::string& out) {
  std::string block(text);
  const VoMsgMemoryResource source(block.data(), static_cast<unsigned>(block.size()), nullptr, nullptr);
  VoMsgMemoryResource target(0u, nullptr, nullptr);
  {
    const std::unique_ptr<VoMsgBufferedWriter> writer(target.getOutputStream(VoMsgResourceLocator::dataPart));
    if (!writer || voFailed(encodeTransfer(TransferEncoding::base64, *writer, source)) || !writer->flush())
      return false;
  }
  return !voFailed(readBytes(target, out)) && decodesTo(out, TransferEncoding::base64, text);
}

bool isIdentity(const char* encoding) {
  if (!encoding) return true;
  for (const char* name : {"7bit", "8bit", "binary"})
    if (equalNoCase(encoding, name)) return true;
  return false;
}

// The decoded text of a part; attachments that were found in it, and changed there, included.
VoErrorCode textOf(VoMsgRfc822Entity& entity, std::string& text) {
  text.clear();
  VoMsgEntity* const child = entity.getChildEntity();
  if (child && child->isModified()) {
    VoMsgMemoryResource target(0u, nullptr, nullptr);
    const std::unique_ptr<VoMsgBufferedWriter> writer(target.getOutputStream(VoMsgResourceLocator::dataPart));
    if (!writer) return kVoWriteFailed;
    const VoErrorCode code = child->_writeToResource(writer.get());
    if (voFailed(code)) return code;
    if (!writer->flush()) return kVoWriteFailed;
    return readBytes(target, text);
  }
  int err = 0;
  const VoMsgResourceLocator* const content = entity._getContent(err, nullptr);
  if (static_cast<VoErrorCode>(err) == kVoNoContent) return kVoSuccess;
  return content ? readBytes(*content, text) : static_cast<VoErrorCode>(err);
}

// A part that declares nothing is in what was recognised; valid UTF-8 needs no recognition.
std::string charsetOf(VoMsgRfc822Entity& entity, std::string_view text, bool& isDeclared) {
  const char* const declared = entity.getCharset();
  isDeclared = declared && *declared;
  if (isDeclared) return declared;
  std::string unused;
  if (isAscii(text)) return "us-ascii";
  if (decodeExactly(text, "utf-8", unused)) return "utf-8";
  int err = 0;
  return textCharsetOf(entity, entity._getContent(err, nullptr)).name;
}

// Without conversion: the text stays in its charset, byte for byte, and the disclaimer goes there.
bool editInPlace(std::string_view text, const std::string& charset, const TextKind& kind, const Disclaimer& disclaimer,
                 const std::string& dressed, std::string& edited, bool& hasPlace) {
  std::string converted;
  const bool isUtf8 = voIsEqualCharsetName(charset.c_str(), "utf-8");
  if (!isPlainSuperset(charset.c_str()) || !encodeExactly(dressed, charset.c_str(), converted)) return false;
  hasPlace = kind.insert(text, converted, disclaimer.atTop, isUtf8, edited);
  return true;
}

// By way of UTF-8, when that loses nothing.
bool editConverted(std::string_view text, const std::string& from, const char* to, const TextKind& kind,
                   const Disclaimer& disclaimer, const std::string& dressed, std::string& edited, bool& hasPlace) {
  std::string decoded;
  std::string changed;
  if (!decodeExactly(text, from.c_str(), decoded)) return false;
  hasPlace = kind.insert(decoded, dressed, disclaimer.atTop, true, changed);
  return !hasPlace || encodeExactly(changed, to, edited);
}

VoErrorCode install(VoMsgRfc822Entity& entity, const TextChange& change) {
  if (!change.charset.empty()) {
    VoErrorCode code = kVoSuccess;
    if (!entity.getHeader("Content-Type"))
      code = entity.setHeaderValue("Content-Type", "text/plain", "us-ascii", nullptr);
    if (!voFailed(code))
      code = entity.setHeaderParameterValue("Content-Type", "charset", change.charset.c_str(), "us-ascii", nullptr);
    if (voFailed(code)) return kVoContentParameterFailed;
  }
  entity.removeHeader("Content-MD5");
  std::string bytes = change.content.bytes;
  VoMsgMemoryResource content(bytes.data(), static_cast<unsigned>(bytes.size()), nullptr, nullptr);
  return entity.setRawContent(&content, nullptr, change.content.encoding);
}

}  // namespace

bool encodeText(std::string_view text, const char* declared, EncodedText& out) {
  const auto differs = [declared](const char* name) { return equalNoCase(viewOf(declared), name) ? nullptr : name; };
  out.encoding = nullptr;
  if (isIdentity(declared) && fitsUnencoded(text, declared)) {
    out.bytes = text;
    return true;
  }
  if (differs(kBase64)) {
    out.bytes = quotedPrintable(text);
    out.encoding = differs(kQuotedPrintable);
    if (decodesTo(out.bytes, TransferEncoding::quotedPrintable, text)) return true;
  }
  out.encoding = differs(kBase64);
  return encodeBase64Text(text, out.bytes);
}

VoErrorCode prepareText(VoMsgRfc822Entity& entity, const TextKind& kind, const Disclaimer& disclaimer,
                        const char* preferCharset, TextChange& out) {
  const char* const encoding = entity.getEncoding();
  const TransferEncoding codec = transferEncodingOf(encoding);
  const bool isEditable =
      codec == TransferEncoding::base64 || codec == TransferEncoding::quotedPrintable || isIdentity(encoding);
  if (!isEditable || entity.isEncryptedPart()) return kVoDisclaimerRefused;
  if (!disclaimer.isDecoded) return kVoConversionFailed;
  std::string text;
  const VoErrorCode code = textOf(entity, text);
  if (voFailed(code)) return code;

  out.entity = &entity;
  out.charset.clear();
  bool isDeclared = false;
  bool hasPlace = false;
  std::string edited;
  const std::string charset = charsetOf(entity, text, isDeclared);
  const std::string dressed = kind.dress(disclaimer.utf8);
  if (editInPlace(text, charset, kind, disclaimer, dressed, edited, hasPlace) ||
      editConverted(text, charset, charset.c_str(), kind, disclaimer, dressed, edited, hasPlace)) {
    if (!isDeclared && !isAscii(dressed)) out.charset = charset;
  } else if (editConverted(text, charset, preferCharset, kind, disclaimer, dressed, edited, hasPlace)) {
    out.charset = preferCharset;
  } else {
    return kVoConversionFailed;
  }
  if (!hasPlace) return kVoDisclaimerRefused;
  return encodeText(edited, encoding, out.content) ? kVoSuccess : kVoEncodeFailed;
}

VoErrorCode installTexts(VoMsgRfc822Entity& message, const std::vector<TextChange>& changes) {
  std::vector<std::pair<VoMsgRfc822Entity*, ContentEditor::Kept>> kept;
  VoErrorCode code = kVoSuccess;
  bool needsMime = false;
  kept.emplace_back(&message, ContentEditor(message).keep());
  for (const TextChange& change : changes) {
    kept.emplace_back(change.entity, ContentEditor(*change.entity).keep());
    if (voFailed(code = install(*change.entity, change))) break;
    needsMime = needsMime || !change.charset.empty() || change.content.encoding;
  }
  if (!voFailed(code) && needsMime && !message.getHeader("MIME-Version"))
    code = message.setHeaderValue("MIME-Version", "1.0", "us-ascii", nullptr);
  if (voFailed(code))
    for (auto edited = kept.rbegin(); edited != kept.rend(); ++edited)
      ContentEditor(*edited->first).restore(std::move(edited->second));
  return code;
}

}  // namespace vomsg::detail
