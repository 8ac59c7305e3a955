#include "vomsg/anomaly/VoMsgRawFields.h"

#include "vomsg/foundation/VoMsgAscii.h"

namespace vomsg::detail {
namespace {

bool isSpace(char c) { return isBlank(c) || isLineEnd(c); }

// Moves behind the comment that begins at `at`; comments nest (RFC 5322, section 3.2.2).
std::size_t behindComment(std::string_view value, std::size_t at) {
  unsigned depth = 0;
  for (; at < value.size(); ++at) {
    if (value[at] == '\\')
      ++at;
    else if (value[at] == '(')
      ++depth;
    else if (value[at] == ')' && --depth == 0)
      return at + 1;
  }
  return value.size();
}

// Moves over blanks, folds and comments.
std::size_t behindSpace(std::string_view value, std::size_t at, bool& hasComment) {
  while (at < value.size()) {
    if (value[at] == '(') {
      hasComment = true;
      at = behindComment(value, at);
    } else if (isSpace(value[at])) {
      ++at;
    } else {
      break;
    }
  }
  return at;
}

std::size_t readQuoted(std::string_view value, std::size_t at, RawParameter& parameter) {
  parameter.isQuoted = true;
  for (++at; at < value.size() && value[at] != '"'; ++at) {
    if (value[at] == '\\' && at + 1 < value.size()) ++at;
    if (isLineEnd(value[at]))
      parameter.isFolded = true;
    else
      parameter.text += value[at];
  }
  return at < value.size() ? at + 1 : at;
}

std::size_t readPlain(std::string_view value, std::size_t at, RawParameter& parameter, bool& hasComment) {
  const std::size_t begin = at;
  while (at < value.size() && value[at] != ';' && value[at] != '(') ++at;
  std::size_t end = at;
  while (end > begin && isSpace(value[end - 1])) --end;
  for (const char c : value.substr(begin, end - begin))
    if (!isLineEnd(c)) parameter.text += c;
  if (at < value.size() && value[at] == '(') at = behindSpace(value, at, hasComment);
  parameter.length = end - begin;
  return at;
}

}  // namespace

RawLine rawLineAt(std::string_view text, std::size_t offset) {
  const std::string_view rest = text.substr(offset);
  std::size_t length = 0;
  while (length < rest.size() && !isLineEnd(rest[length])) ++length;
  std::size_t whole = length;
  if (whole < rest.size()) whole += rest[whole] == '\r' && whole + 1 < rest.size() && rest[whole + 1] == '\n' ? 2 : 1;
  return {rest.substr(0, length), offset, whole};
}

std::vector<RawParameter> rawParameters(std::string_view value, bool& hasComment) {
  std::vector<RawParameter> parameters;
  hasComment = false;
  bool before = false;
  std::size_t at = behindSpace(value, 0, before);
  while (at < value.size() && value[at] != ';') at = value[at] == '(' ? behindComment(value, at) : at + 1;
  while (at < value.size()) {
    at = behindSpace(value, at + 1, hasComment);  // behind the semicolon
    const std::size_t begin = at;
    while (at < value.size() && value[at] != '=' && value[at] != ';' && value[at] != '"' && value[at] != '(') ++at;
    std::size_t end = at;
    while (end > begin && isSpace(value[end - 1])) --end;
    RawParameter parameter;
    parameter.name = value.substr(begin, end - begin);
    at = behindSpace(value, at, hasComment);
    if (at < value.size() && value[at] == '=') {
      at = behindSpace(value, at + 1, hasComment);
      parameter.offset = at;
      if (at < value.size() && value[at] == '"') {
        at = readQuoted(value, at, parameter);
        parameter.length = at - parameter.offset;
      } else {
        at = readPlain(value, at, parameter, hasComment);
      }
      if (!parameter.name.empty()) parameters.push_back(std::move(parameter));
    }
    while (at < value.size() && value[at] != ';') {
      if (value[at] == '(') {
        at = behindSpace(value, at, hasComment);
      } else {
        ++at;
      }
    }
  }
  return parameters;
}

std::string rawMainValue(std::string_view value) {
  std::string main;
  bool hasComment = false;
  for (std::size_t at = behindSpace(value, 0, hasComment); at < value.size() && value[at] != ';';
       at = behindSpace(value, at + 1, hasComment))
    main += toLower(value[at]);
  return main;
}

std::string normalised(std::string_view value) {
  std::string text;
  bool pending = false;
  for (const char c : value) {
    if (isSpace(c)) {
      pending = !text.empty();
      continue;
    }
    if (pending) text += ' ';
    pending = false;
    text += toLower(c);
  }
  return text;
}

}  // namespace vomsg::detail
