#include "vomsg/charset/convert/VoMsgWholeText.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"
#include "vomsg/foundation/VoMsgAscii.h"

namespace vomsg::detail {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct ConverterReturn {
  void operator()(VoMsgCharsetConverter* converter) const {
    VoMsgConverterFactory::getInstance()->destoryConverter(converter);
  }
};

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

void appendUtf8(std::string& out, char32_t character) {
  const auto put = [&out](char32_t byte) { out += static_cast<char>(byte); };
  if (character > 0x10FFFF || isHighSurrogate(character) || isLowSurrogate(character)) character = kReplacement;
  if (character < 0x80) return put(character);
  if (character < 0x800) {
    put(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      put(0xE0 | character >> 12);
    } else {
      put(0xF0 | character >> 18);
      put(0x80 | (character >> 12 & 0x3F));
    }
    put(0x80 | (character >> 6 & 0x3F));
  }
  put(0x80 | (character & 0x3F));
}

// The code units of a text, one after the other; a last one that is cut is no character.
class WideUnits {
 public:
  WideUnits(std::string_view bytes, std::size_t width, bool littleEndian)
      : mBytes(bytes), mWidth(width), mLittleEndian(littleEndian) {}
  bool next(char32_t& unit) {
    if (mBytes.empty()) return false;
    unit = kReplacement;
    if (mBytes.size() < mWidth) {
      mBytes = {};
      return true;
    }
    unit = 0;
    for (std::size_t i = 0; i < mWidth; ++i)
      unit = unit << 8 | static_cast<unsigned char>(mBytes[mLittleEndian ? mWidth - 1 - i : i]);
    mBytes.remove_prefix(mWidth);
    return true;
  }

 private:
  std::string_view mBytes;
  std::size_t mWidth;
  bool mLittleEndian;
};

bool convertPieces(VoMsgCharsetConverter& converter, std::string_view text, std::string& out) {
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

}  // namespace

bool decodeWideText(const char* charset, std::string_view text, std::string& utf8) {
  using namespace std::string_view_literals;
  if (!voIsUnicode(charset)) return false;
  const std::string_view name = charset;
  const std::size_t width = name.find("32") == name.npos ? 2 : 4;
  bool littleEndian = endsWithNoCase(name, "le");
  const std::string_view bigMark = width == 2 ? "\xFE\xFF"sv : "\0\0\xFE\xFF"sv;
  const std::string_view littleMark = width == 2 ? "\xFF\xFE"sv : "\xFF\xFE\0\0"sv;
  if (text.starts_with(bigMark) || text.starts_with(littleMark)) {
    littleEndian = text.starts_with(littleMark);
    text.remove_prefix(width);
  }
  utf8.clear();
  utf8.reserve(text.size());
  WideUnits units(text, width, littleEndian);
  char32_t unit = 0;
  bool present = units.next(unit);
  while (present) {
    char32_t following = 0;
    const bool more = units.next(following);
    if (width == 2 && isHighSurrogate(unit) && more && isLowSurrogate(following)) {
      appendUtf8(utf8, 0x10000 + ((unit - 0xD800) << 10) + (following - 0xDC00));
      present = units.next(unit);
      continue;
    }
    appendUtf8(utf8, unit);
    unit = following;
    present = more;
  }
  return true;
}

bool convertWholeText(const char* to, const char* from, bool substitute, std::string_view text, std::string& out) {
  out.clear();
  std::string decoded;
  if (decodeWideText(from, text, decoded)) {
    text = decoded;
    from = "utf-8";
    if (voIsEqualCharsetName(to, from)) {
      out = std::move(decoded);
      return true;
    }
  }
  const std::unique_ptr<VoMsgCharsetConverter, ConverterReturn> converter(
      VoMsgConverterFactory::getInstance()->createConverter(to, from, substitute ? 1 : 0, '?'));
  return converter && convertPieces(*converter, text, out);
}

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

}  // namespace vomsg::detail
