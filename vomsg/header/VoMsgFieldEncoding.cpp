#include "vomsg/header/VoMsgFieldEncoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <list>
#include <memory>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoConvertCharset.h"
#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/header/VoMsgEncodedWord.h"
#include "vomsg/header/VoMsgLineBreaks.h"

namespace vomsg::detail {

namespace {

constexpr char kUsAscii[] = "us-ascii";
constexpr std::string_view kFold = "\r\n\t";
constexpr std::string_view kBlanks = " \t";

// Fields whose syntax a fold between encoded words would break, or that other software reads line by line.
constexpr std::array<std::string_view, 8> kNeverDivided = {
    "Received", "To", "Cc", "Bcc", "mime-version", "content-type", "content-transfer-encoding", "content-disposition"};

// Text in these is mostly ASCII with single letters that take three bytes each when encoded.
constexpr std::array<std::string_view, 13> kLatinCharsets = {
    "iso-8859-1", "iso-8859-2", "iso-8859-3",  "iso-8859-4",  "iso-8859-5",  "iso-8859-6", "iso-8859-7",
    "iso-8859-8", "iso-8859-9", "iso-8859-10", "iso-8859-13", "iso-8859-14", "iso-8859-15"};

template <class List>
bool contains(const List& list, std::string_view name) {
  return std::any_of(list.begin(), list.end(), [&](std::string_view entry) { return equalNoCase(entry, name); });
}

std::string_view canonicalName(const char* charset) { return viewOf(voGetFQNCharsetName(charset)); }

bool isUsAscii(const char* charset) { return equalNoCase(canonicalName(charset), kUsAscii); }

// A charset's name is written as it is given; a blank, "?" or control character in it would end the word, or the line.
bool fitsEncodedWord(std::string_view charset) {
  return std::none_of(charset.begin(), charset.end(),
                      [](char c) { return (c >= 0 && c <= ' ') || c == '?' || c == 0x7F; });
}

VoErrorCode appendWord(std::string& out, const char* charset, const char* text) {
  char* word = nullptr;
  const VoErrorCode code = voEncodeHeaderValue(charset, text, &word, 0);
  const std::unique_ptr<char, void (*)(char*)> owner(word, voFreeHeaderValue);
  if (voFailed(code)) return code;
  if (!word) return kVoConversionFailed;
  out.append(word);
  return kVoSuccess;
}

// `text` converted from `srcCharset`; as it is when there is nothing to convert or no converter.
VoErrorCode convertValue(std::string& out, std::string_view value, const char* srcCharset, const char* dstCharset) {
  out = value;
  if (!dstCharset) return kVoSuccess;
  const Conversion result = convertText(out, dstCharset, srcCharset, value);
  if (result == Conversion::missing) out = value;
  return result == Conversion::failed ? kVoConversionFailed : kVoSuccess;
}

struct LineTableDeleter {
  void operator()(std::list<char*>* lines) const { voFreeLineTable(lines); }
};

// The most to ask for where the first piece could outgrow an encoded word of 75 columns (RFC 2047, section 2): room for
// ISO-2022-JP is what its name leaves, and HZ gives three bytes for every column asked for.
unsigned firstRoomFor(const char* target, unsigned room) {
  constexpr unsigned kJisRoom = 68 - 11, kHzRoom = 16;
  const std::string_view name = canonicalName(target);
  if (equalNoCase(name, "iso-2022-jp")) return std::min(room, kJisRoom);
  return equalNoCase(name, "hz-gb-2312") ? std::min(room, kHzRoom) : room;
}

VoErrorCode encodeDivided(std::string& out, std::string_view value, const char* source, const char* target,
                          unsigned firstRoom) {
  std::string text(value);
  std::list<char*>* pieces = nullptr;
  const VoErrorCode divided = voDivisionConvert(source, target, text, firstRoomFor(target, firstRoom), &pieces);
  const std::unique_ptr<std::list<char*>, LineTableDeleter> owner(pieces);
  if (voFailed(divided) || !pieces) return kVoConversionFailed;
  for (const char* piece : *pieces) {
    if (!out.empty()) out.append(kFold);
    const VoErrorCode code = appendWord(out, target, piece);
    if (voFailed(code)) return code;
  }
  return kVoSuccess;
}

// Text that stays unencoded is folded between words where it can be: readers turn a fold into a blank, which inside
// a word would be seen. What has no blank in reach is cut where the room ends, but never an encoded word.
VoErrorCode foldPlain(std::string& out, std::string_view text, std::size_t firstRoom) {
  constexpr std::size_t kRoom = 60;  // 68, less the name of the charset
  if (firstRoom == 0) return kVoConversionFailed;
  for (std::size_t room = firstRoom; text.size() > room; room = kRoom) {
    std::size_t cut = room;
    while (cut > 0 && !(isBlank(text[cut - 1]) && !isBlank(text[cut]))) --cut;
    if (cut == 0 && text.substr(0, room).find("=?") == text.npos) cut = room;
    if (cut == 0) {
      cut = std::min(text.find_first_of(kBlanks, room), text.size());
      cut = std::min(text.find_first_not_of(kBlanks, cut), text.size());
    }
    if (cut == text.size()) break;
    out.append(text.substr(0, cut)).append(kFold);
    text.remove_prefix(cut);
  }
  out.append(text);
  return kVoSuccess;
}

}  // namespace

long long judgeSize(std::size_t nameLength, const char* srcCharset, const char* dstCharset) {
  const auto name = static_cast<long long>(nameLength);
  if (!voIsSinglebyteCharset(srcCharset)) return divideSize(nameLength, srcCharset);
  const bool stays = !dstCharset || voIsEqualCharsetName(srcCharset, dstCharset);
  const long long judge = stays ? 74 - name : 67 - name - static_cast<long long>(canonicalName(dstCharset).size());
  return contains(kLatinCharsets, canonicalName(srcCharset)) ? judge - 20 : judge;
}

unsigned divideSize(std::size_t nameLength, const char* srcCharset) {
  const std::uint64_t used = std::uint64_t{nameLength} + canonicalName(srcCharset).size();
  return used + 9 > 75 ? 0 : static_cast<unsigned>(67 - used);
}

VoErrorCode encodeText(std::string& out, std::string_view value, const char* srcCharset, const char* dstCharset) {
  const char* const target = dstCharset ? dstCharset : srcCharset ? srcCharset : kUsAscii;
  if (!fitsEncodedWord(viewOf(target))) return kVoBadArgument;
  std::string text;
  const VoErrorCode code =
      convertValue(text, hasLineBreak(value) ? joinLines(value) : std::string(value), srcCharset, dstCharset);
  if (voFailed(code)) return code;
  out.clear();
  return text.empty() ? kVoSuccess : appendWord(out, target, text.c_str());
}

VoErrorCode encodeFieldValue(std::string& out, std::string_view name, std::string_view value, const char* srcCharset,
                             const char* dstCharset) {
  const std::string line = hasLineBreak(value) ? joinLines(value) : std::string(value);
  const char* const target = dstCharset ? dstCharset : srcCharset ? srcCharset : kUsAscii;
  const char* const source = srcCharset ? srcCharset : target;
  if (!fitsEncodedWord(viewOf(target))) return kVoBadArgument;
  // Behind a very long name the judge size is negative, but there is always room for nothing.
  if (line.empty() || contains(kNeverDivided, name) ||
      static_cast<long long>(line.size()) <= judgeSize(name.size(), source, dstCharset))
    return encodeText(out, line, srcCharset, dstCharset);
  out.clear();
  const unsigned firstRoom = divideSize(name.size(), source);
  if (!isUsAscii(target)) return encodeDivided(out, line, source, target, firstRoom);
  std::string text;
  const VoErrorCode code = convertValue(text, line, srcCharset, dstCharset);
  return voFailed(code) ? code : foldPlain(out, text, firstRoom);
}

}  // namespace vomsg::detail
