// Cuts a text into pieces that each make one encoded word. The text is decoded once; then characters are taken for as
// long as they can be sure to fit, the piece so far is encoded anew from its first character, and when it has outgrown
// its budget the last take begins the next piece. Encoding each piece from the start makes it complete in itself:
// escape sequences open and close within it, and no character is ever cut.
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoConvertCharset.h"
#include "vomsg/charset/convert/VoGetnUnicodeString.h"
#include "vomsg/charset/convert/VoMsgChineseText.h"
#include "vomsg/charset/convert/VoMsgGbMapping.h"
#include "vomsg/charset/convert/VoMsgIcuHandle.h"
#include "vomsg/charset/convert/VoMsgJisEscapes.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"

static constexpr char kLogSource[] = "VoDivisionConvert";

namespace {

using vomsg::detail::equalNoCase;
using vomsg::detail::IcuHandle;
using vomsg::detail::kJisToAscii;

constexpr std::size_t kPieceBlock = 128;  // every piece is a block of this size
constexpr int kEncodedWordRoom = 68;      // 75, the longest encoded word, less "=?", "?B?" and "?="
constexpr std::string_view kHzToAscii = "~}";
constexpr vomsg::detail::Replacement kReplacement = {true, '?'};

// Their letters are written in quoted-printable, three characters each. "iso_8859-5", the canonical spelling, is
// missing on purpose: texts in that charset are written in base64.
constexpr std::string_view kQuotedCharsets[] = {
    "iso-8859-1", "iso-8859-2", "iso-8859-3",  "iso-8859-4",  "iso-8859-5",  "iso-8859-6",  "iso-8859-7",
    "iso-8859-8", "iso-8859-9", "iso-8859-10", "iso-8859-13", "iso-8859-14", "iso-8859-15",
};

// Chinese texts take the mappings of the converters that the factory has for them.
enum class Mode { icu, jis, gb, hz };

Mode modeOf(const char* charset) {
  constexpr struct {
    const char* charset;
    Mode mode;
  } kModes[] = {{"iso-2022-jp", Mode::jis}, {"gb2312", Mode::gb}, {"hz-gb-2312", Mode::hz}};
  for (const auto& row : kModes)
    if (equalNoCase(row.charset, charset)) return row.mode;
  return Mode::icu;
}

// What ICU converts for a charset.
const char* icuName(const char* charset, Mode mode) {
  return mode == Mode::gb || mode == Mode::hz ? vomsg::detail::kGbMapping : charset;
}

struct LineTableDeleter {
  void operator()(std::list<char*>* lines) const { voFreeLineTable(lines); }
};

template <class Reader, class Writer>
void rewrite(std::string_view bytes, std::string& out) {
  vomsg::detail::RewriteStage<Reader, Writer>(kReplacement).convert(bytes, true, out);
}

// The target charset and what fits into one encoded word of it.
class Target {
 public:
  explicit Target(const char* name) : mName(name), mMode(modeOf(name)) {
    const vomsg::detail::IcuSetup setup{vomsg::detail::IcuSetup::kDefault, vomsg::detail::icuRuleOf(kReplacement)};
    const IcuHandle named = vomsg::detail::openIcu(name, setup);
    mpConverter = vomsg::detail::openIcu(icuName(name, mMode), setup);
    if (!named || !mpConverter) return;
    mWidth = vomsg::detail::maxBytesPerChar(*named);
  }

  bool isOpen() const { return mWidth != 0; }
  int width() const { return mWidth; }

  // Bytes of text, without the closing sequence, for the first piece and for those after it.
  int firstBudget(int room) const {
    // HZ counts its first room more generously than the others. Who asks for more than an encoded word holds gets it.
    const std::int64_t wanted = mMode == Mode::hz ? std::int64_t{3} * room - 8 : budgetFor(room);
    return static_cast<int>(std::min<std::int64_t>(wanted, kPieceBlock - 1 - closing().size()));
  }
  int nextBudget() const {
    const int room = mName.size() > INT_MAX / 2 ? INT_MIN / 2 : kEncodedWordRoom - static_cast<int>(mName.size());
    return static_cast<int>(std::min<std::int64_t>(budgetFor(room), kPieceBlock - 1));
  }

  // `text` as a piece of its own: its bytes, and how many of them count against the budget.
  struct Encoded {
    std::string bytes;
    std::size_t counted;
  };
  bool encode(std::u16string_view text, Encoded& piece) const {
    std::string bytes;
    if (mMode == Mode::gb || mMode == Mode::hz) {
      std::u16string adjusted(text);
      vomsg::detail::adjustForGb(adjusted.data(), adjusted.size());
      if (!vomsg::detail::encodeWithIcu(*mpConverter, adjusted, bytes)) return false;
      piece.bytes.clear();
      if (mMode == Mode::gb)
        rewrite<vomsg::detail::GbReader, vomsg::detail::EucWriter>(bytes, piece.bytes);
      else
        rewrite<vomsg::detail::GbReader, vomsg::detail::HzWriter>(bytes, piece.bytes);
    } else {
      if (!vomsg::detail::encodeWithIcu(*mpConverter, text, bytes)) return false;
      piece.bytes = std::move(bytes);
    }
    piece.counted = piece.bytes.size();
    if (endsWith(piece.bytes, closing())) piece.counted -= closing().size();
    // Pieces are handed out as C strings; a NUL would hide the rest of one.
    return piece.bytes.find('\0') == std::string::npos;
  }

 private:
  // What a piece may end with beyond its budget.
  std::string_view closing() const {
    return mMode == Mode::jis ? kJisToAscii : mMode == Mode::hz ? kHzToAscii : std::string_view();
  }

  static bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
  }

  std::int64_t budgetFor(int room) const {
    const std::int64_t groups = room / 4;
    if (mWidth == 1) {
      const bool quoted = std::any_of(std::begin(kQuotedCharsets), std::end(kQuotedCharsets),
                                      [&](std::string_view name) { return equalNoCase(name, mName); });
      return quoted ? room / 3 : room;
    }
    return 3 * groups - (mMode == Mode::jis ? 3 : mMode == Mode::hz ? 2 : 0);
  }

  IcuHandle mpConverter;
  std::string_view mName;
  Mode mMode;
  int mWidth = 0;
};

// The whole text in UTF-16, up to its first NUL; surrogates without a partner, which no charset can say, become U+FFFD.
bool decode(const char* charset, std::string_view bytes, std::u16string& text) {
  const Mode mode = modeOf(charset);
  const IcuHandle converter = vomsg::detail::openIcu(icuName(charset, mode));
  if (!converter) return false;
  std::string prepared;
  if (mode == Mode::jis) bytes = prepared = vomsg::detail::dropRedundantJisEscapes(bytes);
  if (mode == Mode::hz) {
    rewrite<vomsg::detail::HzReader, vomsg::detail::EucWriter>(bytes, prepared);
    bytes = prepared;
  }
  if (!vomsg::detail::decodeWithIcu(*converter, bytes, text)) return false;
  text.resize(std::min(text.find(u'\0'), text.size()));
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool lead = (text[i] & 0xFC00) == 0xD800;
    if (lead && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00)
      ++i;
    else if ((text[i] & 0xF800) == 0xD800)
      text[i] = 0xFFFD;
  }
  return true;
}

VoErrorCode appendPiece(std::list<char*>& lines, std::string_view piece) {
  auto* block = static_cast<char*>(std::malloc(kPieceBlock));
  if (!block) return kVoNoMemory;
  block[piece.copy(block, kPieceBlock - 1)] = '\0';
  try {
    lines.push_back(block);
  } catch (...) {
    std::free(block);
    return kVoNoMemory;
  }
  return kVoSuccess;
}

// One piece of `text` from `start` on; `end` becomes the position behind it. What a take costs is an estimate that
// escape sequences can exceed, so a take that turns out too long is tried again at half the size, down to a character.
VoErrorCode fillPiece(const std::u16string& text, const Target& target, int budget, int start, int& end,
                      std::string& piece) {
  Target::Encoded longer;
  std::u16string taken;
  std::int64_t counted = 0;
  std::int64_t room = budget;
  for (end = start; static_cast<std::size_t>(end) < text.size();) {
    int next = end;
    taken.clear();
    const VoErrorCode code =
        voGetnUnicodeString(text, next, static_cast<unsigned>(room), static_cast<unsigned>(target.width()), taken);
    if (voFailed(code)) return end == start ? code : kVoSuccess;
    if (!target.encode(
            std::u16string_view(text).substr(static_cast<std::size_t>(start), static_cast<std::size_t>(next - start)),
            longer))
      return kVoConversionFailed;
    const bool tooLong = static_cast<std::int64_t>(longer.counted) > budget;
    if (tooLong && room > target.width()) {
      room = std::max<std::int64_t>(room / 2, target.width());
      continue;
    }
    if (tooLong && end > start) break;
    end = next;
    std::swap(piece, longer.bytes);
    counted = static_cast<std::int64_t>(longer.counted);
    room = budget - counted;
  }
  return kVoSuccess;
}

VoErrorCode divide(const std::u16string& text, const Target& target, int firstRoom, std::list<char*>& lines) {
  int budget = target.firstBudget(firstRoom);
  std::string piece;
  for (int start = 0, end = 0; static_cast<std::size_t>(start) < text.size(); start = end) {
    VoErrorCode code = fillPiece(text, target, budget, start, end, piece);
    if (voFailed(code)) return code;
    if (piece.size() >= kPieceBlock) return kVoConversionFailed;
    // Characters that the target says with nothing (a soft hyphen in ISO-2022-JP) make no piece of their own.
    if (!piece.empty()) code = appendPiece(lines, piece);
    if (voFailed(code)) return code;
    budget = target.nextBudget();
  }
  return kVoSuccess;
}

}  // namespace

VoErrorCode voDivisionConvert(const char* fromCharset, const char* toCharset, std::string& text, unsigned int firstRoom,
                              std::list<char*>** lines) {
  if (lines) *lines = nullptr;
  const VoErrorCode code = vomsg::detail::guarded([&] {
    if (!lines || !fromCharset || !toCharset) return kVoBadArgument;
    const Target target(voGetFQNCharsetName(toCharset));
    std::u16string unicode;
    if (!decode(voGetFQNCharsetName(fromCharset), text, unicode) || !target.isOpen()) return kVoConversionFailed;
    // voGetnUnicodeString counts units in an int.
    if (unicode.size() > INT_MAX) return kVoConversionFailed;
    std::unique_ptr<std::list<char*>, LineTableDeleter> table(new std::list<char*>);
    const VoErrorCode divided = divide(unicode, target, static_cast<int>(firstRoom), *table);
    if (!voFailed(divided)) *lines = table.release();
    return divided;
  });
  if (voFailed(code)) VO_LOG(1, "", "The text can not be divided: 0x%08X.", code);
  return code;
}

void voFreeLineTable(std::list<char*>* lines) {
  if (!lines) return;
  for (char* line : *lines) std::free(line);
  delete lines;
}
