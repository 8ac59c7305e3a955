#include "vomsg/edit/VoMsgDisclaimerText.h"

#include <algorithm>
#include <memory>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgResourceBytes.h"

namespace vomsg::detail {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// UTF-16 or UTF-32 in the order that the text speaks for: where characters below U+0100 have their NUL bytes. Null when
// it speaks against the name, as text in another charset under a wrong label does.
const char* wideCharset(const char* charset, std::string_view text) {
  const std::string_view name = charset;
  const std::size_t width = name.find("32") == name.npos ? 2 : 4;
  constexpr std::string_view kMark("\xFF\xFE\0\0\xFE\xFF", 6);
  const std::string_view start = text.substr(0, width);
  if (start == kMark.substr(0, width) || start == kMark.substr(kMark.size() - width)) return charset;
  std::size_t leading = 0;
  std::size_t trailing = 0;
  for (std::size_t i = 0; i + width <= text.size(); i += width) {
    leading += text[i] == '\0';
    trailing += text[i + width - 1] == '\0';
  }
  const bool isLittle = trailing > leading;
  if (leading == trailing || endsWithNoCase(name, isLittle ? "be" : "le")) return text.empty() ? charset : nullptr;
  if (width == 2) return isLittle ? "utf-16le" : "utf-16be";
  return isLittle ? "utf-32le" : "utf-32be";
}

bool isUtf8Name(const char* charset) { return voIsEqualCharsetName(charset, "utf-8"); }

}  // namespace

// Converters stand U+FFFD in for what is invalid, some of them U+001A, so more of these than there were are a loss.
bool decodeExactly(std::string_view bytes, const char* charset, std::string& utf8) {
  if (isUtf8Name(charset)) {
    utf8 = bytes;
    return isUtf8(bytes);
  }
  if (voIsUnicode(charset) && !(charset = wideCharset(charset, bytes))) return false;
  const auto substitutes = [](std::string_view text) { return std::count(text.begin(), text.end(), '\x1A'); };
  return convertWholeText("utf-8", charset, Loss::refused, bytes, utf8) && utf8.find(kReplacement) == utf8.npos &&
         substitutes(utf8) == substitutes(bytes) && isUtf8(utf8);
}

bool encodeExactly(std::string_view utf8, const char* charset, std::string& bytes) {
  if (isUtf8Name(charset)) {
    bytes = utf8;
    return isUtf8(utf8);
  }
  std::string again;
  return convertWholeText(charset, "utf-8", Loss::refused, utf8, bytes) && decodeExactly(bytes, charset, again) &&
         again == utf8;
}

bool isPlainSuperset(const char* charset) {
  if (isUtf8Name(charset) || voIsEqualCharsetName(charset, "us-ascii")) return true;
  if (!voIsSinglebyteCharset(charset)) return false;
  constexpr std::string_view kProbe = "\t\r\n !\"'-./0129:;<=>ABXYZ\\abxyz";  // EBCDIC has them elsewhere
  std::string converted;
  return convertWholeText("utf-8", charset, Loss::refused, kProbe, converted) && converted == kProbe;
}

bool endsLine(std::string_view text) { return !text.empty() && isLineEnd(text.back()); }

VoErrorCode loadDisclaimer(const VoMsgResourceLocator& resource, const char* charset, bool atTop, Disclaimer& out) {
  if (voFailed(readBytes(resource, out.raw))) return kVoDisclaimerCopyFailed;
  out.charset = charset;
  out.atTop = atTop;
  out.isDecoded = decodeExactly(out.raw, charset, out.utf8);
  std::string_view text = out.utf8;
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
  out.utf8 = out.isDecoded ? withCrLf(text) : std::string();
  return kVoSuccess;
}

}  // namespace vomsg::detail
