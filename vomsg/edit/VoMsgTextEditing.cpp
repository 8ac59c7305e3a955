#include "vomsg/edit/VoMsgTextEditing.h"

#include <memory>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/edit/VoMsgContentEditor.h"
#include "vomsg/encoding/VoMsgTransferEncoding.h"
#include "vomsg/entity/VoMsgEditUndo.h"
#include "vomsg/entity/VoMsgTextCharset.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"

namespace vomsg::detail {

namespace {

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

// Charsets that say everything in ASCII bytes: ISO-2022 with escapes, HZ with tildes.
bool mayBeSevenBitCharset(std::string_view text) {
  return text.find('\x1B') != text.npos || text.find("~{") != text.npos;
}

bool declaresCharset(const VoMsgRfc822Entity& entity) {
  const char* const declared = entity.getCharset();
  return declared && *declared;
}

// Most of what declares nothing needs no recognition; HTML may declare it inside.
std::string charsetOf(VoMsgRfc822Entity& entity, std::string_view text) {
  const bool isPlainAscii = isAscii(text) && !mayBeSevenBitCharset(text);
  if (isPlainAscii && !declaresCharset(entity) && !entity.isContentType("text", "html")) return "us-ascii";
  int err = 0;
  const TextCharset found = textCharsetOf(entity, entity._getContent(err, nullptr));
  if (found.origin == VoMsgRfc822Entity::CharsetOrigin::declared) return found.name;
  if (isPlainAscii) return "us-ascii";
  std::string unused;
  return !isAscii(text) && decodeExactly(text, "utf-8", unused) ? "utf-8" : found.name;
}

// One text and what goes into it.
class Insertion {
 public:
  Insertion(std::string_view text, const TextKind& kind, const Disclaimer& disclaimer, std::string_view lineEnd)
      : mText(text),
        mKind(kind),
        mDisclaimer(disclaimer),
        mDressed(kind.dress(disclaimer.utf8)),
        mHasLineFeeds(lineEnd == "\n") {}

  // Without conversion: the text stays in its charset, byte for byte, and the disclaimer goes there.
  bool inPlace(const char* charset) {
    std::string converted;
    if (!isPlainSuperset(charset) || !encodeExactly(mDressed, charset, converted)) return false;
    hasPlace = mKind.insert(mText, converted, mDisclaimer.atTop, voIsEqualCharsetName(charset, "utf-8"), edited);
    if (mHasLineFeeds) edited = withoutCrLf(edited);
    return true;
  }

  // By way of UTF-8, when that loses nothing.
  bool converted(const char* from, const char* to) {
    std::string decoded;
    std::string changed;
    if (!decodeExactly(mText, from, decoded)) return false;
    hasPlace = mKind.insert(decoded, mDressed, mDisclaimer.atTop, true, changed);
    if (mHasLineFeeds) changed = withoutCrLf(changed);
    return !hasPlace || encodeExactly(changed, to, edited);
  }

  bool isAsciiOnly() const { return isAscii(mDressed); }

  std::string edited;
  bool hasPlace = false;

 private:
  const std::string_view mText;
  const TextKind& mKind;
  const Disclaimer& mDisclaimer;
  const std::string mDressed;
  const bool mHasLineFeeds;  // lines of the message end in LF alone, and so do those of its texts
};

VoErrorCode install(VoMsgRfc822Entity& entity, const TextChange& change) {
  if (!change.charset.empty()) {
    VoErrorCode code = kVoSuccess;
    if (!entity.getHeader("Content-Type"))
      code = entity.setHeaderValue("Content-Type", "text/plain", "us-ascii", nullptr);
    if (!voFailed(code))
      code = entity.setHeaderParameterValue("Content-Type", "charset", change.charset.c_str(), "us-ascii", nullptr);
    if (voFailed(code)) return kVoContentParameterFailed;
  }
  const VoErrorCode removed = entity.removeHeader("Content-MD5");
  if (voFailed(removed)) return removed;
  std::string bytes = change.content.bytes;
  VoMsgMemoryResource content(bytes.data(), static_cast<unsigned>(bytes.size()), nullptr, nullptr);
  return entity.setRawContent(&content, nullptr, change.content.encoding);
}

}  // namespace

std::string charsetOfText(VoMsgRfc822Entity& entity) {
  std::string text;
  return voFailed(textOf(entity, text)) ? "us-ascii" : charsetOf(entity, text);
}

VoErrorCode prepareText(VoMsgRfc822Entity& entity, const TextKind& kind, const Disclaimer& disclaimer,
                        const char* preferCharset, const BoundaryTable& delimiters, TextChange& out) {
  const char* const encoding = entity.getEncoding();
  const TransferEncoding codec = transferEncodingOf(encoding);
  if (codec != TransferEncoding::base64 && codec != TransferEncoding::quotedPrintable && !isIdentityEncoding(encoding))
    return kVoDisclaimerRefused;
  if (!disclaimer.isDecoded) return kVoConversionFailed;
  std::string text;
  const VoErrorCode code = textOf(entity, text);
  if (voFailed(code)) return code;

  out.entity = &entity;
  out.charset.clear();
  const std::string charset = charsetOf(entity, text);
  const std::string_view lineEnd = ContentEditor(entity).lineEnd();
  Insertion insertion(text, kind, disclaimer, lineEnd);
  if (insertion.inPlace(charset.c_str()) || insertion.converted(charset.c_str(), charset.c_str())) {
    if (!declaresCharset(entity) && !insertion.isAsciiOnly()) out.charset = charset;
  } else if (insertion.converted(charset.c_str(), preferCharset)) {
    out.charset = preferCharset;
  } else {
    return kVoConversionFailed;
  }
  if (!insertion.hasPlace) return kVoDisclaimerRefused;
  const TransferRules rules{encoding, lineEnd, delimiters};
  return encodeForTransfer(insertion.edited, rules, out.content) ? kVoSuccess : kVoEncodeFailed;
}

VoErrorCode installTexts(VoMsgRfc822Entity& message, const std::vector<TextChange>& changes, EditUndos& undos) {
  undos.add(message);
  bool needsMime = false;
  for (const TextChange& change : changes) {
    undos.add(*change.entity, true);
    const VoErrorCode code = install(*change.entity, change);
    if (voFailed(code)) return code;
    needsMime = needsMime || !change.charset.empty() || change.content.encoding;
  }
  if (needsMime && !message.getHeader("MIME-Version")) {
    const VoErrorCode code = message.setHeaderValue("MIME-Version", "1.0", "us-ascii", nullptr);
    if (voFailed(code)) return code;
  }
  return undos.settle(kVoSuccess);
}

}  // namespace vomsg::detail
