// One pass over the value with a table look-up for each byte. The tokens are those of VoMsgTokenizer's default
// tables, seen as the grammar needs them: a whole comment, and whatever the tables call a parenthesis or an end of
// line, is a blank; ":", "?" and "?=" are text.
#include "vomsg/header/VoMsgStructuredValue.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/header/VoMsgRfc2231.h"

namespace vomsg::detail {
namespace {

enum class Token : std::uint8_t { end, semicolon, equals, quote, encodedStart, blank, text };

enum class ByteClass : std::uint8_t {
  text,
  semicolon,
  open,   // "(": a comment begins
  blank,  // a blank, or a ")" that closes nothing
  quote,
  equals,  // "=", and "=?" where that begins
  mark,    // "?", ":", "?=": text that ends a run of text
  lineEnd  // text, but a blank where the value ends
};

constexpr std::array<ByteClass, 256> kClasses = [] {
  std::array<ByteClass, 256> classes{};
  classes[';'] = ByteClass::semicolon;
  classes['('] = ByteClass::open;
  classes[')'] = classes['\t'] = classes[' '] = ByteClass::blank;
  classes['"'] = ByteClass::quote;
  classes['='] = ByteClass::equals;
  classes['?'] = classes[':'] = ByteClass::mark;
  classes['\r'] = classes['\n'] = ByteClass::lineEnd;
  return classes;
}();

ByteClass classOf(char c) { return kClasses[static_cast<unsigned char>(c)]; }

class Scanner {
 public:
  explicit Scanner(std::string_view text) : mText(text) {}

  Token token() const { return mToken; }
  std::string_view text() const { return mText.substr(mStart, mNext - mStart); }

  Token next() {
    mStart = mNext;
    return mToken = mNext == mText.size() ? Token::end : mIsQuoted ? nextQuoted() : nextPlain();
  }
  Token skipBlanks() {
    while (mToken == Token::blank) next();
    return mToken;
  }

  // The rest of the quoted string whose quote is the current token; the token after it becomes current.
  std::string_view takeQuoted() {
    const std::size_t start = mNext;
    if (next() == Token::text) next();
    const std::string_view content = mText.substr(start, mStart - start);
    if (mToken == Token::quote) next();
    return content;
  }
  // Everything from the current token to the next of `ends`, which becomes current, as written.
  std::string_view takeUntil(std::string_view ends) {
    const std::size_t start = mStart;
    mNext = std::min(mText.find_first_of(ends, start), mText.size());
    mIsQuoted = false;
    next();
    return mText.substr(start, mStart - start);
  }
  // The same to the next ";" that no backslash escapes.
  std::string_view takeEscapedUntilSemicolon() {
    const std::size_t start = mStart;
    while (mNext < mText.size() && mText[mNext] != ';') mNext += mText[mNext] == '\\' ? 2 : 1;
    mNext = std::min(mNext, mText.size());
    next();
    return mText.substr(start, mStart - start);
  }

 private:
  bool isTextAt(std::size_t at) const {
    const ByteClass kind = classOf(mText[at]);
    return kind == ByteClass::text || (kind == ByteClass::lineEnd && at + 1 != mText.size());
  }

  Token nextPlain() {
    if (isTextAt(mNext)) {
      do ++mNext;
      while (mNext < mText.size() && isTextAt(mNext));
      return Token::text;
    }
    const bool isBeforeQuestion = mNext + 1 < mText.size() && mText[mNext + 1] == '?';
    const bool isBeforeEquals = mNext + 1 < mText.size() && mText[mNext + 1] == '=';
    switch (classOf(mText[mNext++])) {
      case ByteClass::semicolon:
        return Token::semicolon;
      case ByteClass::open:
        skipComment();
        return Token::blank;
      case ByteClass::quote:
        mIsQuoted = true;
        return Token::quote;
      case ByteClass::equals:
        if (!isBeforeQuestion) return Token::equals;
        ++mNext;
        return Token::encodedStart;
      case ByteClass::mark:
        if (mText[mStart] == '?' && isBeforeEquals) ++mNext;
        return Token::text;
      case ByteClass::blank:
      case ByteClass::lineEnd:
      case ByteClass::text:
        break;
    }
    return Token::blank;
  }

  Token nextQuoted() {
    if (mText[mNext] == '"') {
      ++mNext;
      mIsQuoted = false;
      return Token::quote;
    }
    while (mNext < mText.size() && mText[mNext] != '"') mNext += mText[mNext] == '\\' ? 2 : 1;
    mNext = std::min(mNext, mText.size());
    return Token::text;
  }

  void skipComment() {
    std::size_t depth = 1;
    while (depth > 0 && mNext < mText.size()) {
      const char c = mText[mNext];
      if (c == '(') ++depth;
      if (c == ')') --depth;
      mNext += c == '\\' ? 2 : 1;
    }
    mNext = std::min(mNext, mText.size());
  }

  std::string_view mText;
  std::size_t mStart = 0;  // of the current token
  std::size_t mNext = 0;
  Token mToken = Token::blank;
  bool mIsQuoted = false;
};

// A backslash goes, the character after it stays; a lone one at the end goes too.
void removeEscapes(std::string& out, std::string_view text) {
  out.clear();
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t escape = std::min(text.find('\\', at), text.size());
    out.append(text.substr(at, escape - at));
    if (escape + 1 < text.size()) out.push_back(text[escape + 1]);
    at = escape + 2;
  }
}

void trimBlanks(std::string_view& text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
}

// A parameter's strings, reused when an earlier value left some.
StructuredParameter& newParameter(StructuredValue& out, std::string_view name) {
  if (out.count == out.parameters.size()) out.parameters.emplace_back();
  StructuredParameter& parameter = out.parameters[out.count++];
  parameter.name.assign(name);
  parameter.value.clear();
  parameter.isEncoded = false;
  return parameter;
}

void parseMainValue(StructuredValue& out, Scanner& scanner) {
  scanner.next();
  while (scanner.token() != Token::end && scanner.token() != Token::semicolon) {
    if (scanner.token() == Token::encodedStart) {
      out.value.append(scanner.takeEscapedUntilSemicolon());
      continue;
    }
    if (scanner.token() == Token::text) out.value.append(scanner.text());
    scanner.next();
  }
}

// The scanner stands at "=".
void parseBoundary(StructuredParameter& parameter, StructuredValue& out, Scanner& scanner) {
  scanner.next();
  while (scanner.token() == Token::blank && isBlank(scanner.text()[0])) scanner.next();
  if (scanner.token() == Token::quote) {
    removeEscapes(parameter.value, scanner.takeQuoted());
    if (parameter.value.empty()) parameter.value = "\"";
    return;
  }
  std::string_view raw = scanner.takeUntil(";");
  trimBlanks(raw);
  parameter.value.assign(raw);
  if (raw.find_first_of("()<>@,;:\\\"/[]?\t ") != raw.npos) out.needsQuoting = true;
}

// The scanner stands at "=".
void parseValue(StructuredParameter& parameter, Scanner& scanner) {
  do scanner.next();
  while (scanner.token() == Token::equals || scanner.token() == Token::blank);
  switch (scanner.token()) {
    case Token::quote:
      removeEscapes(parameter.value, scanner.takeQuoted());
      parameter.isEncoded = parameter.value.find("=?") != std::string::npos;
      return;
    case Token::encodedStart:
      parameter.value.assign(scanner.takeUntil("; \t"));
      parameter.isEncoded = true;
      return;
    case Token::text:
      break;
    case Token::end:
    case Token::semicolon:
    case Token::equals:
    case Token::blank:
      return;
  }
  // A "=" inside is part of the value: unquoted URLs and base64 have them.
  while (scanner.token() != Token::end && scanner.token() != Token::semicolon && scanner.token() != Token::blank) {
    if (scanner.token() != Token::quote) parameter.value.append(scanner.text());
    scanner.next();
  }
}

}  // namespace

const StructuredParameter* StructuredValue::find(std::string_view name) const {
  for (std::size_t i = 0; i < count; ++i)
    if (equalNoCase(parameters[i].name, name)) return &parameters[i];
  return nullptr;
}

void parseStructuredValue(StructuredValue& out, std::string_view text, int maxParameters) {
  out.value.clear();
  out.count = 0;
  out.needsQuoting = false;
  Scanner scanner(text);
  parseMainValue(out, scanner);
  while (scanner.token() != Token::end) {
    if (maxParameters > 0 && out.count >= static_cast<std::size_t>(maxParameters)) return;
    if (scanner.token() != Token::text) {
      scanner.next();
      continue;
    }
    const std::string_view name = scanner.text();
    scanner.next();
    const bool isBoundary = equalNoCase(name, "boundary");
    if (scanner.skipBlanks() == Token::equals) {
      StructuredParameter& parameter = newParameter(out, name);
      if (isBoundary)
        parseBoundary(parameter, out, scanner);
      else
        parseValue(parameter, scanner);
    } else if (isBoundary && scanner.token() == Token::encodedStart) {
      // "=?" is one token, so its "=" is not seen. What follows is read on as further parameters.
      newParameter(out, name).value = "?";
      scanner.next();
    }
  }
}

bool findBoundary(const StructuredValue& type, std::string& boundary) {
  const StructuredParameter* plain = nullptr;
  Rfc2231Pieces pieces("boundary");
  for (std::size_t i = 0; i < type.count; ++i) {
    const StructuredParameter& parameter = type.parameters[i];
    if (equalNoCase(parameter.name, "boundary"))
      plain = &parameter;
    else
      pieces.add(parameter.name, parameter.value.c_str());
  }
  if (plain) {
    boundary = plain->value;
    return true;
  }
  pieces.sort();
  std::string charset;
  return pieces.assemble(boundary, charset);
}

bool sameStructuredValue(const StructuredValue& a, const StructuredValue& b) {
  if (!equalNoCase(a.value, b.value) || a.count != b.count) return false;
  for (std::size_t i = 0; i < a.count; ++i)
    if (!equalNoCase(a.parameters[i].name, b.parameters[i].name) || a.parameters[i].value != b.parameters[i].value)
      return false;
  return true;
}

}  // namespace vomsg::detail
