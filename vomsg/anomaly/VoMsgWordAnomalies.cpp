// Encoded words are looked for everywhere, also where RFC 2047, section 5 allows none: readers decode them there too.

#include "vomsg/anomaly/VoMsgValueAnomalies.h"
#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/header/VoMsgEncodedWord.h"

namespace vomsg::detail {
namespace {

constexpr std::size_t kMaxWord = 4096;  // of what is decoded; longer ones are read as they stand

struct Word {
  std::string charset;
  char encoding = '\0';
  std::string_view text;
  std::size_t length = 0;  // of the whole word; 0: broken
};

// The word that begins with the "=?" at the front of `value`. Without its encoding it is no word at all.
bool readWord(std::string_view value, Word& word) {
  const std::size_t charsetEnd = value.find('?', 2);
  if (charsetEnd == value.npos || charsetEnd == 2 || charsetEnd > 80) return false;
  const std::string_view charset = value.substr(2, charsetEnd - 2);
  if (charset.find_first_of(" \t\r\n=\"<>") != charset.npos) return false;
  if (value.size() < charsetEnd + 3 || value[charsetEnd + 2] != '?') return false;
  word.encoding = toLower(value[charsetEnd + 1]);
  if (word.encoding != 'b' && word.encoding != 'q') return false;
  word.charset = charset.substr(0, charset.find('*'));  // without the language (RFC 2231, section 5)
  const std::size_t begin = charsetEnd + 3;
  std::size_t end = begin;
  while (end < value.size() && value[end] != '?' && !isLineEnd(value[end])) ++end;
  word.text = value.substr(begin, end - begin);
  word.length = value.substr(end, 2) == "?=" ? end + 2 : 0;
  return true;
}

std::string decoded(const Word& word) {
  std::string text;
  if (word.text.size() > kMaxWord) return text;
  if (word.encoding == 'q') {
    for (std::size_t i = 0; i < word.text.size(); ++i) {
      const std::string_view rest = word.text.substr(i);
      const int high = rest.size() > 2 ? voRfc2047HexCharToInt(static_cast<unsigned char>(rest[1])) : -1;
      const int low = rest.size() > 2 ? voRfc2047HexCharToInt(static_cast<unsigned char>(rest[2])) : -1;
      if (rest[0] == '=' && high >= 0 && low >= 0) {
        text += static_cast<char>(high * 16 + low);
        i += 2;
      } else {
        text += rest[0];
      }
    }
    return text;
  }
  std::uint32_t bits = 0;
  unsigned count = 0;
  for (const char c : word.text) {
    static constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t digit = kDigits.find(c);
    if (digit == kDigits.npos) continue;
    bits = (bits << 6 | static_cast<std::uint32_t>(digit)) & 0xFFFFFFu;
    if ((count += 6) >= 8) {
      count -= 8;
      text += static_cast<char>(bits >> count & 0xFF);
    }
  }
  return text;
}

bool isMultibyte(const std::string& charset) {
  return voIsUnicode(charset.c_str()) || startsWithNoCase(charset, "utf-16") || startsWithNoCase(charset, "utf-32");
}

void findInWord(const Word& word, std::uint64_t at, AnomalySink& sink) {
  if (word.length == 0) return sink.add(kVoAnomalyWordBroken, at, word.text.size());
  if (!voIsRightCharsetName(word.charset.c_str())) sink.add(kVoAnomalyWordUnknownCharset, at, word.length);
  if (isMultibyte(word.charset)) return;
  const std::string text = decoded(word);
  if (text.find_first_of("\r\n") != text.npos) sink.add(kVoAnomalyWordLineBreak, at, word.length);
  if (text.find('\0') != text.npos) sink.add(kVoAnomalyWordNul, at, word.length);
}

bool mayHaveWords(std::string_view name) {
  static constexpr std::string_view kNone[] = {"Received", "Message-ID",  "In-Reply-To", "References",
                                               "Date",     "Return-Path", "MIME-Version"};
  for (const std::string_view none : kNone)
    if (equalNoCase(name, none)) return false;
  return !startsWithNoCase(name, "Content-") || equalNoCase(name, "Content-Description");
}

}  // namespace

void findWordAnomalies(const std::vector<RawField>& fields, std::uint64_t base, AnomalySink& sink) {
  for (const RawField& field : fields) {
    bool isMisplaced = !mayHaveWords(field.name);
    bool isToldMisplaced = false;
    Word word;
    for (std::size_t at = field.value.find("=?"); at != field.value.npos; at = field.value.find("=?", at)) {
      const std::string_view rest = field.value.substr(at);
      const std::uint64_t place = base + field.valueOffset + at;
      if (!readWord(rest, word)) {
        at += 2;
        continue;
      }
      findInWord(word, place, sink);
      if (isMisplaced && !isToldMisplaced && word.length > 0) {
        sink.add(kVoAnomalyWordMisplaced, place, word.length);
        isToldMisplaced = true;
      }
      at += word.length > 0 ? word.length : 2;
    }
  }
}

}  // namespace vomsg::detail
