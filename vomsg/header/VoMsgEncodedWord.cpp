// A value is read token by token. Line ends vanish together with the blanks behind them; each "=?" begins an attempt to
// read an encoded word, and what does not turn out to be one is text, as it stands. No byte is looked at twice: a
// failed attempt keeps what it has read, the token that did not fit included, and reading goes on behind it.
#include "vomsg/header/VoMsgEncodedWord.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/encoding/VoBase64.h"
#include "vomsg/encoding/VoBase64Decoder.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgTokenizer.h"
#include "vomsg/header/VoMsgQEncoding.h"
#include "vomsg/header/VoMsgWordConverters.h"
#include "vomsg/header/tables/VoMsgEncodedWordTokens.h"

namespace vomsg::detail {
namespace {

constexpr char kLogSource[] = "VoMsgEncodedWord";
constexpr char kUsAscii[] = "us-ascii";

constexpr std::string_view kQCharsets[] = {
    "iso-8859-1", "iso-8859-2",  "iso-8859-3",  "iso-8859-4",  "iso-8859-5",  "iso-8859-6", "iso-8859-7", "iso-8859-8",
    "iso-8859-9", "iso-8859-10", "iso-8859-13", "iso-8859-14", "iso-8859-15", "utf-8",      kUsAscii,
};

using Token = VoMsgTokenizer::Token;

struct Word {
  bool isWhole = false;
  std::string_view raw;  // from "=?" to where reading ended
  std::string_view charset;
  std::string_view encoding;
  std::string_view text;
};

// Tokens of a value as views into it.
class WordReader {
 public:
  explicit WordReader(const char* value) : mValue(value), mTokenizer(value, &kEncodedWordTokens) {}

  int next() {
    mStart = position();
    return mTokenizer.getNextToken();
  }
  std::string_view token() const { return since(mStart); }

  // The rest of the word whose "=?" is the current token.
  Word readWord() {
    Word word;
    const std::size_t start = mStart;
    word.isWhole = readParts(word);
    word.raw = since(start);
    mTokenizer.setState(wordValue);
    return word;
  }

 private:
  bool readParts(Word& word) {
    if (next() != Token::text) return false;
    word.charset = token();
    word.charset = word.charset.substr(0, word.charset.find('*'));  // a language may follow (RFC 2231, section 5)
    if (next() != Token::question || next() != Token::text) return false;
    word.encoding = token();
    if (next() != Token::question) return false;
    mTokenizer.setState(wordText);
    int id = next();
    if (id == Token::text) {
      word.text = token();
      id = next();
    }
    return id == Token::encodedEnd;
  }

  std::size_t position() const { return static_cast<std::size_t>(mTokenizer.getPosition()); }
  std::string_view since(std::size_t start) const { return {mValue + start, position() - start}; }

  const char* mValue;
  VoMsgTokenizer mTokenizer;
  std::size_t mStart = 0;
};

// The words of a value and the room they are decoded in.
struct WordDecoder {
  WordReader reader;
  std::string bytes;
};

VoMsgRfc2047EncodeType_e encodingOf(std::string_view letter) {
  if (equalNoCase(letter, "b")) return kVoEncodeB;
  if (equalNoCase(letter, "q")) return kVoEncodeQ;
  return {};
}

// Decoded bytes are a C string: a NUL ends them.
bool _decodeEncodedWord(VoMsgRfc2047EncodeType_e type, std::string_view text, std::string& out) {
  out.clear();
  switch (type) {
    case kVoEncodeB:
      out.resize(text.size() / 4 * 3 + 3 + kBase64Slack);
      out.resize(Base64Decoder().decode(text.data(), text.size(), out.data()));
      break;
    case kVoEncodeQ:
      decodeQ(text, out);
      break;
    default:
      return false;
  }
  out.resize(std::min(out.find('\0'), out.size()));
  return true;
}

bool decodeNext(WordDecoder& words, Word& word) {
  word = words.reader.readWord();
  return word.isWhole && _decodeEncodedWord(encodingOf(word.encoding), word.text, words.bytes);
}

void _getConvertValue(WordDecoder& words, WordConverters& converters, std::string& out) {
  Word word;
  if (decodeNext(words, word))
    converters.append(out, word.charset, words.bytes);
  else
    out += word.raw;
}

// A charset counts as soon as it is read, even where the word turns out to be none.
void _getConvertValueEx(WordDecoder& words, std::string_view& charset, std::string& out) {
  Word word;
  out += decodeNext(words, word) ? std::string_view(words.bytes) : word.raw;
  if (!word.charset.empty()) charset = word.charset;
}

// `appendWord` decodes the word whose "=?" was just read. With `joinsWords` the blanks behind a word go as well.
// Without it, a word leaves the fold before it in force: in "a CR LF word blank b" the blank goes with the fold.
template <class AppendWord>
void decodeValue(WordDecoder& words, bool joinsWords, std::string& out, AppendWord appendWord) {
  bool folded = false;
  for (int id; (id = words.reader.next()) != Token::end;) {
    if (id == Token::carriageReturn || id == Token::lineFeed) {
      folded = true;
    } else if (id == Token::encodedStart) {
      appendWord();
      if (joinsWords) folded = true;
    } else if (id != Token::whitespace || !folded) {
      out += words.reader.token();
      folded = false;
    }
  }
}

// True for a value that decoding leaves alone.
bool isPlain(std::string_view value) {
  return value.find("=?") == value.npos && value.find('\r') == value.npos && value.find('\n') == value.npos;
}

// A charset that would break the word apart, or the header line it stands in.
bool canNameCharset(std::string_view charset) {
  return std::none_of(charset.begin(), charset.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= ' ' || byte == 0x7F || c == '?';
  });
}

bool _encodeValue(std::string& out, const char* value, const char* charset, bool force) {
  if (*charset == '\0') charset = kUsAscii;
  const std::string_view name = voGetFQNCharsetName(charset);
  if (name == kUsAscii && !force) {
    out = value;
    return true;
  }
  if (!canNameCharset(charset)) return false;
  const bool usesQ = std::any_of(std::begin(kQCharsets), std::end(kQCharsets),
                                 [&](std::string_view known) { return equalNoCase(known, name); });
  out = "=?";
  out += usesQ ? name : charset;
  out += usesQ ? "?Q?" : "?B?";
  if (usesQ) {
    encodeQ(value, out);
  } else {
    const CString encoded(voEncodeBase64(value));
    if (!encoded) return false;
    out += encoded.get();
  }
  out += "?=";
  return true;
}

VoErrorCode handOut(char*& out, std::string_view text) {
  out = copyCString(text).release();
  return out ? kVoSuccess : kVoNoMemory;
}

}  // namespace

bool hasMixedCharsets(const char* value) {
  if (!value) return false;
  WordReader reader(value);
  std::string first;
  for (int id; (id = reader.next()) != Token::end;) {
    if (id != Token::encodedStart) continue;
    const Word word = reader.readWord();
    if (first.empty())
      first = word.charset;
    else if (!word.charset.empty() && !equalNoCase(first, word.charset) &&
             !voIsEqualCharsetName(first.c_str(), std::string(word.charset).c_str()))
      return true;
  }
  return false;
}

}  // namespace vomsg::detail

using namespace vomsg::detail;

VoErrorCode voDecodeHeaderValue(const char* charset, const char* value, char** out) {
  if (out) *out = nullptr;
  if (!value || !out) {
    VO_LOG(1, "", "No value or no room for the result.");
    return kVoBadArgument;
  }
  const VoErrorCode code = guarded([&] {
    if (isPlain(value)) return handOut(*out, value);
    WordDecoder words{WordReader(value), {}};
    WordConverters converters(charset ? charset : kUsAscii);
    std::string decoded;
    decodeValue(words, false, decoded, [&] { _getConvertValue(words, converters, decoded); });
    return handOut(*out, decoded);
  });
  if (voFailed(code)) VO_LOG(1, "", "No memory for the decoded value.");
  return code;
}

VoErrorCode voDecodeHeaderValue(char*& charsetOut, char*& out, const char* value) {
  if (!value) {
    VO_LOG(1, "", "No value.");
    return kVoBadArgument;
  }
  std::free(charsetOut);
  charsetOut = nullptr;
  out = nullptr;
  const VoErrorCode code = guarded([&] {
    if (isPlain(value)) return handOut(out, value);
    WordDecoder words{WordReader(value), {}};
    std::string_view charset;
    std::string decoded;
    decodeValue(words, true, decoded, [&] { _getConvertValueEx(words, charset, decoded); });
    if (!charset.empty() && voFailed(handOut(charsetOut, charset))) return kVoNoMemory;
    return handOut(out, decoded);
  });
  if (voFailed(code)) VO_LOG(1, "", "No memory for the decoded value.");
  return code;
}

VoErrorCode voEncodeHeaderValue(const char* charset, const char* value, char** out, signed char force) {
  if (out) *out = nullptr;
  if (!value || !out) {
    VO_LOG(1, "", "No value or no room for the result.");
    return kVoBadArgument;
  }
  const VoErrorCode code = guarded([&] {
    std::string encoded;
    if (!_encodeValue(encoded, value, charset ? charset : kUsAscii, force != 0)) return kVoEncodeFailed;
    return handOut(*out, encoded);
  });
  if (voFailed(code)) VO_LOG(1, "", "The value can not be encoded in [%s].", charset ? charset : kUsAscii);
  return code;
}

void voFreeHeaderValue(char* value) { std::free(value); }
