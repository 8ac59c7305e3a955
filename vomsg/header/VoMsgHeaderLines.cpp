#include "vomsg/header/VoMsgHeaderLines.h"

#include <array>
#include <cstddef>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

namespace vomsg::detail {
namespace {

// The first CR or LF, or `end`. One pass for both: looking for LF alone and for a lone CR afterwards would walk the
// rest of a message without LF once for every line of it.
const char* findLineEnd(const char* at, const char* end) {
#if defined(__SSE2__)
  const __m128i cr = _mm_set1_epi8('\r');
  const __m128i lf = _mm_set1_epi8('\n');
  for (; end - at >= 16; at += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const int found = _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(bytes, cr), _mm_cmpeq_epi8(bytes, lf)));
    if (found != 0) return at + __builtin_ctz(static_cast<unsigned>(found));
  }
#endif
  while (at != end && !isLineEnd(*at)) ++at;
  return at;
}

bool isBlankText(std::string_view text) { return text.find_first_not_of(" \t") == text.npos; }

// What ends a field's name: a blank, ":" and the NUL that ends the line's meaning.
constexpr std::array<bool, 256> kEndsName = [] {
  std::array<bool, 256> ends{};
  ends[0] = ends['\t'] = ends[' '] = ends[':'] = true;
  return ends;
}();

std::size_t skipBlanks(std::string_view text, std::size_t at) {
  while (at < text.size() && isBlank(text[at])) ++at;
  return at;
}

}  // namespace

HeaderLines::HeaderLines(VoMsgBufferedReader& reader, std::string& scratch, unsigned wanted)
    : mReader(reader), mScratch(scratch), mWanted(wanted), mWindowOffset(reader.getOffset()) {
  const std::string_view window = ReaderWindow::buffered(reader);
  mpWindow = mpNext = window.data();
  mpEnd = mpWindow + window.size();
}

VoMsgTerminatorType HeaderLines::next(const BoundaryTable* boundaries) {
  if (!readFirstLine()) return kVoTerminatorEnd;
  if (mText.empty()) return kVoTerminatorEmpty;
  if (isBlank(mText[0]) && isBlankText(mText)) return kVoTerminatorBlank;
  if (boundaries && boundaries->match(mText).type != kVoBoundaryNone) {
    leaveLine();
    return kVoTerminatorBoundary;
  }
  if (mpNext == mpEnd) keepText();
  peekContinuation();
  return kVoTerminatorText;
}

bool HeaderLines::nextLogical() {
  if (!readFirstLine()) return false;
  if (mpNext == mpEnd) keepText();
  peekContinuation();
  unfold();
  return true;
}

// The first character of a continuation, its fold, goes: always a tab; a space unless the host keeps them. A
// continuation of one blank and CR LF keeps the blank.
void HeaderLines::unfold() {
  if (!mIsContinued) return;
  keepText();
  while (mIsContinued) {
    const std::size_t start = mScratch.size();
    readPhysicalLine(&mScratch);
    if (mpLine) mScratch.append(mpLine, mLineLength);
    const bool isKeptSpace = mScratch[start] == ' ' && (VoMsgExtraOption & kVoOptionKeepFoldSpace) != 0;
    const bool isLoneBlank = mScratch.size() == start + 1 && mTerminatorLength == 2;
    if (!isKeptSpace && !isLoneBlank) mScratch.erase(start, 1);
    peekContinuation();
  }
  mText = mScratch;
}

void HeaderLines::skipContinuations() {
  mText = {};
  while (mIsContinued) {
    readPhysicalLine(nullptr);
    peekContinuation();
  }
}

void HeaderLines::finish() {
  ReaderWindow::consume(mReader, static_cast<std::size_t>(mpNext - mpWindow));
  mWindowOffset = offset();
  mpWindow = mpNext;
}

bool HeaderLines::readFirstLine() {
  mLineOffset = offset();
  mIsContinued = false;
  mText = {};
  mScratch.clear();
  if (!readPhysicalLine(&mScratch)) return false;
  mText = mpLine ? std::string_view(mpLine, mLineLength) : std::string_view(mScratch);
  return true;
}

// False at the end of the data. A line that the window does not hold whole is appended to `spill`, unless that is
// null, and leaves mpLine null.
bool HeaderLines::readPhysicalLine(std::string* spill) {
  if (mpNext == mpEnd && !refill()) return false;
  const char* const at = findLineEnd(mpNext, mpEnd);
  if (at == mpEnd || (*at == '\r' && at + 1 == mpEnd)) {
    readSplitLine(spill);
    return true;
  }
  mpLine = mpNext;
  mLineLength = static_cast<std::size_t>(at - mpNext);
  mTerminatorLength = *at == '\r' && at[1] == '\n' ? 2 : 1;
  mpNext = at + mTerminatorLength;
  return true;
}

void HeaderLines::readSplitLine(std::string* spill) {
  mpLine = nullptr;
  mTerminatorLength = 0;
  do {
    const char* const at = findLineEnd(mpNext, mpEnd);
    if (spill) spill->append(mpNext, at);
    // Without a text yet: a first line. Continuations are put together only for who wants them.
    if (spill && mText.empty() && mWanted != kAllNames && !isStillNeeded(*spill)) spill = nullptr;
    mpNext = at;
    if (at == mpEnd) continue;
    mTerminatorLength = 1;
    const bool isCr = *mpNext++ == '\r';
    if (isCr && (mpNext != mpEnd || refill()) && *mpNext == '\n') {
      ++mpNext;
      mTerminatorLength = 2;
    }
    return;
  } while (refill());
}

// A line may be as long as the message. Of one that nobody wants, which is most likely no header at all, only as
// much is kept as tells what it is: names that matter are short, and so are delimiters but for their padding.
bool HeaderLines::isStillNeeded(std::string& text) const {
  constexpr std::size_t kEnough = 4096;
  if (text.size() <= kEnough || text.compare(0, 2, "--") == 0) return true;
  const HeaderLine line = cutHeaderLine(text, true);
  if (line.kind == HeaderLine::Kind::field) return wants(headerNameOf(line.name));
  if (line.kind != HeaderLine::Kind::open) return false;
  const bool isAfterName = isBlank(text.back());
  text.resize(kEnough / 2);
  if (isAfterName) text.back() = ' ';
  return true;
}

bool HeaderLines::refill() {
  mWindowOffset += static_cast<std::uint64_t>(mpEnd - mpWindow);
  ReaderWindow::consume(mReader, static_cast<std::size_t>(mpEnd - mpWindow));
  ReaderWindow::fill(mReader);
  const std::string_view window = ReaderWindow::buffered(mReader);
  mpWindow = mpNext = window.data();
  mpEnd = mpWindow + window.size();
  return !window.empty();
}

// Goes back to the start of the line that next() read.
void HeaderLines::leaveLine() {
  if (mpLine) {
    mpNext = mpLine;
    return;
  }
  finish();
  moveTo(mReader, mLineOffset);
  const std::string_view window = ReaderWindow::buffered(mReader);
  mWindowOffset = mLineOffset;
  mpWindow = mpNext = window.data();
  mpEnd = mpWindow + window.size();
}

// Moves a text that lies in the window, which a refill replaces, to the scratch string.
void HeaderLines::keepText() {
  if (mText.data() != mScratch.data()) mScratch.assign(mText);
  mText = mScratch;
}

void HeaderLines::peekContinuation() {
  if (mpNext == mpEnd) refill();
  mIsContinued = mpNext != mpEnd && isBlank(*mpNext);
}

HeaderLine cutHeaderLine(std::string_view text, bool more) {
  using Kind = HeaderLine::Kind;
  std::size_t at = 0;
  while (at < text.size() && !kEndsName[static_cast<unsigned char>(text[at])]) ++at;
  if (at == text.size()) return {more ? Kind::open : Kind::ignored, {}, {}};
  if (text[at] == '\0') return {Kind::ignored, {}, {}};
  const std::string_view name = text.substr(0, at);
  at = skipBlanks(text, at);
  if (at == text.size()) return {more ? Kind::open : Kind::dropped, {}, {}};
  if (text[at] != ':') return {Kind::dropped, {}, {}};
  std::string_view value = text.substr(skipBlanks(text, at + 1));
  if (!more) value = value.substr(0, value.find('\0'));
  return {Kind::field, name, value};
}

}  // namespace vomsg::detail
