#include "vomsg/embedded/VoMsgEmbededScanner.h"

#include <algorithm>

#include "vomsg/embedded/VoMsgBlockStartSearch.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoBinHexCoding.h"
#include "vomsg/encoding/VoCodecSupport.h"
#include "vomsg/encoding/VoUUEncode.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgLineWalk.h"

namespace vomsg::detail {

namespace {

// "end", with or without its line end, and with the blanks that some gateways add.
bool isEndLine(std::string_view line) {
  if (!line.starts_with("end")) return false;
  return line.find_first_not_of(" \t\r\n", 3) == line.npos;
}

// Steps over the encoded data from the opening colon on, through the line end behind the closing one. Returns the
// number of bytes, 0 when it is something else.
std::uint64_t lengthOfBinHexData(VoMsgBufferedReader& text, std::uint64_t limit) {
  ByteSource source(text, limit);
  std::uint64_t length = 0;
  const auto next = [&] {
    const int c = source.next();
    length += c >= 0;
    return c;
  };
  int before = '\n', c = next();
  for (; c >= 0 && (isBlank(static_cast<char>(c)) || isLineEnd(static_cast<char>(c))); c = next()) before = c;
  if (c != ':' || !isLineEnd(static_cast<char>(before))) return 0;
  do {
    c = next();
  } while (isBinHexCharacter(c));
  if (c != ':') return 0;
  const std::uint64_t closed = length;
  do {
    c = next();
  } while (c == ' ' || c == '\t');
  if (c < 0) return length;
  if (c == '\r') {
    const std::uint64_t ended = length;
    return next() == '\n' ? length : ended;
  }
  return c == '\n' ? length : closed;
}

}  // namespace

bool EmbeddedScanner::next(EmbeddedPiece& block) {
  while (findBlockStart()) {
    const std::uint64_t start = mAt;
    if (!takeLine()) return false;
    if (startsWithNoCase(mLine, kBinHexMarker) ? readBinHex(start, block) : readUUEncode(start, block)) return true;
  }
  return false;
}

bool EmbeddedScanner::findBlockStart() {
  if (mAt >= mEnd || !moveTo(mText, mAt)) return false;
  BlockStartSearch search;
  const std::uint64_t start = mAt;
  while (mAt < mEnd && ReaderWindow::fill(mText)) {
    std::string_view window = ReaderWindow::buffered(mText);
    if (window.size() > mEnd - mAt) window = window.substr(0, static_cast<std::size_t>(mEnd - mAt));
    if (search.feed(window)) {
      mAt = start + search.lineOffset();
      return moveTo(mText, mAt);
    }
    ReaderWindow::consume(mText, window.size());
    mAt += window.size();
  }
  return false;
}

// The next line of the text; false at its end.
bool EmbeddedScanner::takeLine() {
  std::size_t kept = 0;
  const WalkedLine line = walkLine(mText, mEnd - mAt, [&](std::string_view stretch, bool) {
    kept += stretch.copy(mBytes.data() + kept, mBytes.size() - kept);
    return true;
  });
  mAt += line.length;
  mLine = {mBytes.data(), kept};
  mLineIsWhole = kept == line.length;
  return line.length > 0;
}

bool EmbeddedScanner::isData() const { return mLineIsWhole && isUUEncodeData(mLine); }

// Both are called with the first line taken, and leave mAt behind the block, or behind the first line, whose successor
// may begin a block of its own.

bool EmbeddedScanner::readUUEncode(std::uint64_t start, EmbeddedPiece& block) {
  std::string_view name;
  if (!isUUEncodeBegin(mLine, name)) return false;
  const std::uint64_t first = mAt;
  std::uint64_t end = 0;
  if (takeLine() && isData()) {
    if (!isUUEncodeZeroLine(mLine)) {
      end = mAt;
      while (takeLine() && (isData() || isEndLine(mLine))) {
        end = mAt;
        if (isEndLine(mLine)) break;
      }
    } else if (mLine.find_first_of("\r\n") <= 1 && takeLine() && isEndLine(mLine)) {  // "~~~" is a fence, no zero
      end = mAt;
    }
  }
  mAt = end > 0 ? end : first;
  if (end == 0) return false;
  block = {EmbeddedKind::uuencode, static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(end - start)};
  return true;
}

bool EmbeddedScanner::readBinHex(std::uint64_t start, EmbeddedPiece& block) {
  const std::uint64_t data = lengthOfBinHexData(mText, mEnd - mAt);
  if (data == 0) return false;
  const std::uint64_t size = mAt - start + data;
  BinHexSummary summary;
  if (!moveTo(mText, start) || voFailed(surveyBinHex(mText, size, summary))) return false;
  mAt = start + size;
  block = {EmbeddedKind::binHex, static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(size)};
  return true;
}

}  // namespace vomsg::detail
