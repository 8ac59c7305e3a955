#include "vomsg/edit/VoMsgDisclaimerText.h"

#include <algorithm>
#include <memory>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::detail {

namespace {

constexpr VoMsgResourceLocator::VoMsgResourceDataType kData = VoMsgResourceLocator::dataPart;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Shortest forms only, no surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    if (lead < 0x80) continue;
    const int more = lead >= 0xC2 && lead <= 0xDF   ? 1
                     : (lead & 0xF0) == 0xE0        ? 2
                     : lead >= 0xF0 && lead <= 0xF4 ? 3
                                                    : 0;
    if (more == 0 || text.size() - i < static_cast<std::size_t>(more)) return false;
    const auto second = static_cast<unsigned char>(text[i]);
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) || (lead == 0xF0 && second < 0x90) ||
        (lead == 0xF4 && second > 0x8F))
      return false;
    for (int n = 0; n < more; ++n, ++i)
      if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return false;
  }
  return true;
}

// Converters take a NUL for the end of the text, so what lies between the NULs goes through by itself.
bool convert(std::string_view in, const char* to, const char* from, std::string& out) {
  VoMsgConverterFactory* const factory = VoMsgConverterFactory::getInstance();
  const auto giveBack = [factory](VoMsgCharsetConverter* converter) { factory->destoryConverter(converter); };
  const std::unique_ptr<VoMsgCharsetConverter, decltype(giveBack)> converter(factory->createConverter(to, from, 0, '?'),
                                                                             giveBack);
  if (!converter) return false;
  out.clear();
  std::string piece;
  std::string converted;
  while (true) {
    const std::size_t nul = in.find('\0');
    piece.assign(in.substr(0, nul));
    if (voFailed(converter->convert(converted, piece))) return false;
    out += converted;
    if (nul == in.npos) return true;
    out += '\0';
    in.remove_prefix(nul + 1);
  }
}

bool isUtf8Name(const char* charset) { return voIsEqualCharsetName(charset, "utf-8"); }

std::string withCrLf(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 16);
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\r\n");
    out += text.substr(0, end);
    if (end == text.npos) break;
    out += "\r\n";
    text.remove_prefix(end + (text.substr(end, 2) == "\r\n" ? 2 : 1));
  }
  return out;
}

}  // namespace

VoErrorCode readBytes(const VoMsgResourceLocator& resource, std::string& bytes) {
  bytes.assign(resource.getSize(kData), '\0');
  const std::unique_ptr<VoMsgBufferedReader> reader(resource.getInputStream(kData));
  if (!reader) return kVoReadFailed;
  const unsigned wanted = static_cast<unsigned>(bytes.size());
  bytes.resize(wanted > 0 ? reader->read(bytes.data(), wanted) : 0);
  return bytes.size() == wanted ? kVoSuccess : kVoReadFailed;
}

// Converters stand U+FFFD in for what is invalid, some of them U+001A, so more of these than there were are a loss.
bool decodeExactly(std::string_view bytes, const char* charset, std::string& utf8) {
  if (isUtf8Name(charset)) {
    utf8 = bytes;
    return isUtf8(bytes);
  }
  const auto substitutes = [](std::string_view text) { return std::count(text.begin(), text.end(), '\x1A'); };
  return convert(bytes, "utf-8", charset, utf8) && utf8.find(kReplacement) == utf8.npos &&
         substitutes(utf8) == substitutes(bytes) && isUtf8(utf8);
}

bool encodeExactly(std::string_view utf8, const char* charset, std::string& bytes) {
  if (isUtf8Name(charset)) {
    bytes = utf8;
    return isUtf8(utf8);
  }
  std::string again;
  return convert(utf8, charset, "utf-8", bytes) && decodeExactly(bytes, charset, again) && again == utf8;
}

bool isPlainSuperset(const char* charset) {
  if (isUtf8Name(charset) || voIsEqualCharsetName(charset, "us-ascii")) return true;
  if (!voIsSinglebyteCharset(charset)) return false;
  constexpr std::string_view kProbe = "\t\r\n !\"'-./0129:;<=>ABXYZ\\abxyz";  // EBCDIC has them elsewhere
  std::string converted;
  return convert(kProbe, "utf-8", charset, converted) && converted == kProbe;
}

bool isAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
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
