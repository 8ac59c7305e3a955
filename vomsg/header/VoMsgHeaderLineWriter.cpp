// Three levels, from the outside in: a text is cut at its line breaks, each line at its encoded words, and what is left
// is folded at spaces, commas and, where there is neither, wherever the line is full.
#include "vomsg/header/VoMsgHeaderLineWriter.h"

#include <algorithm>

#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"

namespace vomsg::detail {
namespace {

constexpr std::size_t kLineWidth = 76;
constexpr std::size_t kUnbreakableWidth = 126;
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kBreaks = "\r\n";
constexpr std::string_view kBreaksAndBlanks = "\r\n \t";

std::size_t roomAt(std::size_t column, std::size_t width) { return width > column ? width - column : 0; }

void cutFront(std::string_view& text, std::string_view characters) {
  text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
}

// How much of a `text` that does not fit goes on the line at `column`.
std::size_t pieceLength(std::string_view text, std::size_t column, bool isAddressList) {
  std::size_t length = std::min(roomAt(column, kLineWidth), text.size());
  if (isAddressList && length < text.size()) {
    const std::size_t comma = text.substr(0, length).rfind(',');
    if (comma != text.npos) length = comma + 1;
  }
  if (length == 0 || length == text.size() || text[length] == ' ' || text[length - 1] == ' ') return length;
  const std::size_t space = text.substr(0, length).rfind(' ');
  if (space == text.npos) return roomAt(column, kUnbreakableWidth) > text.size() ? text.size() : length;
  const bool isIndent = text.substr(0, space).find_first_not_of(kBlanks) == text.npos;
  return isIndent ? length : space + 1;
}

}  // namespace

void HeaderLineWriter::write(std::string_view text) {
  mColumn += text.size();
  if (mFailed || text.empty()) return;
  mFailed = !mWriter.write(text.data(), static_cast<unsigned>(text.size()));
}

void HeaderLineWriter::fold() {
  write(kHeaderFold);
  mColumn = 1;
}

void HeaderLineWriter::endField() {
  write(kBreaks);
  mColumn = 0;
}

void HeaderLineWriter::writeFolded(std::string_view text, bool isAddressList) {
  while (!mFailed) {
    const std::string_view line = text.substr(0, text.find_first_of(kBreaks));
    writeLine(line, isAddressList);
    text.remove_prefix(line.size());
    cutFront(text, kBreaksAndBlanks);
    if (text.empty()) return;
    if (mColumn > 1) fold();  // a line of nothing but its fold would pass for the end of the header
  }
}

void HeaderLineWriter::writeLine(std::string_view text, bool isAddressList) {
  while (!text.empty() && !mFailed) {
    const EncodedWordSpan word = findEncodedWord(text, 0);
    if (word.begin == text.npos) return writePlain(text, isAddressList);
    // What belongs to the word as a phrase or a list item stays on its line.
    std::size_t end = std::min(text.find_first_not_of('"', word.end), text.size());
    end = std::min(text.find_first_not_of(",;", end), text.size());
    if (mColumn + end > kLineWidth)
      writeBeforeWord(text.substr(0, word.begin));
    else
      write(text.substr(0, word.begin));
    write(text.substr(word.begin, end - word.begin));
    text.remove_prefix(end);
    cutFront(text, kBlanks);
    if (!text.empty()) fold();
  }
}

// The word that follows starts a line of its own.
void HeaderLineWriter::writeBeforeWord(std::string_view text) {
  if (text.empty() && mColumn <= 1) return;
  do {
    const std::string_view piece = text.substr(0, roomAt(mColumn, kLineWidth));
    write(piece);
    fold();
    text.remove_prefix(piece.size());
  } while (!text.empty() && !mFailed);
}

void HeaderLineWriter::writePlain(std::string_view text, bool isAddressList) {
  while (mColumn + text.size() > kLineWidth && !mFailed) {
    const std::size_t length = pieceLength(text, mColumn, isAddressList);
    write(text.substr(0, length));
    text.remove_prefix(length);
    if (text.empty()) return;
    fold();
  }
  write(text);
}

VoErrorCode WriteLine76(VoMsgBufferedWriter* writer, const char* text, unsigned length, unsigned& column,
                        bool isAddressList) {
  HeaderLineWriter line(*writer, column);
  line.writeFolded({text, length}, isAddressList);
  column = static_cast<unsigned>(line.column());
  return line.failed() ? kVoWriteFailed : kVoSuccess;
}

EncodedWordSpan findEncodedWord(std::string_view text, std::size_t from) {
  constexpr std::string_view::size_type npos = std::string_view::npos;
  for (std::size_t at = text.find("=?", from); at != npos; at = text.find("=?", at + 2)) {
    const std::size_t charsetEnd = text.find_first_of("? \t", at + 2);
    if (charsetEnd == npos || charsetEnd + 2 >= text.size()) continue;
    if (charsetEnd == at + 2 || text[charsetEnd] != '?' || text[charsetEnd + 2] != '?') continue;
    const std::size_t start = charsetEnd + 3;
    const std::size_t end = text.find("?=", start);
    if (end == npos) break;  // none further on either
    return {at, end + 2, text.substr(at + 2, charsetEnd - at - 2), text[charsetEnd + 1],
            text.substr(start, end - start)};
  }
  return {npos, npos, {}, '\0', {}};
}

std::string quoteParameterValue(std::string_view value) {
  if (!value.empty() && value.find_first_of("()<>@,;:\\\"/[]= \t") == value.npos) return std::string(value);
  std::string quoted = "\"";
  for (const char c : value) {
    if (c == '\\' || c == '"') quoted.push_back('\\');
    quoted.push_back(c);
  }
  return quoted.append("\"");
}

}  // namespace vomsg::detail
