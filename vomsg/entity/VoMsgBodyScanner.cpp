// Only a line that begins with "--" can end a stretch of body, so the scan looks for such candidates, sixteen bytes
// at a time, instead of walking over all lines, and hands each to the boundary table. A lone CR starts a line as an LF
// does. The reader's window may end anywhere: the one or two bytes that matter from before it are carried along.

#include "vomsg/entity/VoMsgBodyScanner.h"

#include <cstring>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vomsg::detail {

namespace {

// The first CR or LF in [from, end), or `end`.
const char* findLineEnd(const char* from, const char* end) {
#if defined(__SSE2__)
  const __m128i cr = _mm_set1_epi8('\r');
  const __m128i lf = _mm_set1_epi8('\n');
  for (; end - from >= 16; from += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const int mask = _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(bytes, cr), _mm_cmpeq_epi8(bytes, lf)));
    if (mask) return from + __builtin_ctz(static_cast<unsigned>(mask));
  }
#endif
  while (from < end && !isLineEnd(*from)) ++from;
  return from;
}

// What of a candidate line can matter: its first bytes, and whether anything but blanks follows them. So a line of
// any length costs a fixed amount of memory.
class CandidateLine {
 public:
  explicit CandidateLine(std::size_t limit) : mLimit(limit) {}

  void add(std::string_view piece) {
    const std::size_t room = mLimit - mText.size();
    mText.append(piece.substr(0, room));
    if (piece.size() > room && !mTooLong) mTooLong = piece.find_first_not_of(" \t", room) != piece.npos;
  }
  bool tooLong() const { return mTooLong; }
  std::string_view text() const { return mText; }

 private:
  std::size_t mLimit;
  std::string mText;
  bool mTooLong = false;
};

class Scan {
 public:
  Scan(VoMsgBufferedReader& reader, const BoundaryTable& boundaries) : mReader(reader), mBoundaries(boundaries) {}

  BodyEnd run() {
    mOffset = mReader.getOffset();
    while (ReaderWindow::fill(mReader)) {
      const std::string_view window = ReaderWindow::buffered(mReader);
      const char* const begin = window.data();
      const char* const end = begin + window.size();
      const char* at = begin;
      if (!(mAtLineStart && *begin == '-')) at = begin + 1 <= end ? findHyphenLine(begin + 1, end) : end;
      if (at == end) {
        step(window);
        continue;
      }
      step(window.substr(0, static_cast<std::size_t>(at - begin)));
      if (tryCandidate()) return mResult;
    }
    mResult = {};
    mResult.lineOffset = mResult.lineEnd = mOffset;
    return mResult;
  }

 private:
  // Leaves `stretch` behind, remembering how it ended.
  void step(std::string_view stretch) {
    if (stretch.empty()) return;
    const char last = stretch.back();
    const char before = stretch.size() > 1 ? stretch[stretch.size() - 2] : mLast;
    mTerminator = last == '\n' ? (before == '\r' ? 2u : 1u) : last == '\r' ? 1u : 0u;
    mLast = last;
    mOffset += stretch.size();
    // An LF that follows a CR in the next window still belongs to that line end.
    mAtLineStart = mTerminator != 0;
    ReaderWindow::consume(mReader, stretch.size());
  }

  // The reader stands at a line start and a hyphen. Consumes the line; true when it is a delimiter in force.
  bool tryCandidate() {
    BodyEnd end;
    end.lineOffset = mOffset;
    end.terminatorBefore = mTerminator;
    const std::string_view window = ReaderWindow::buffered(mReader);
    const char* const lineEnd = findLineEnd(window.data(), window.data() + window.size());
    const auto length = static_cast<std::size_t>(lineEnd - window.data());
    if (length + 2 <= window.size()) {  // the line and its whole line end are here
      end.match = mBoundaries.match(window.substr(0, length));
      const bool pair = *lineEnd == '\r' && lineEnd[1] == '\n';
      step(window.substr(0, length + (pair ? 2 : 1)));
    } else {
      end.match = matchAcrossWindows();
    }
    if (end.match.type == kVoBoundaryNone) return false;
    end.lineEnd = mOffset;
    end.terminator = mTerminator;
    mResult = end;
    return true;
  }

  BoundaryMatch matchAcrossWindows() {
    CandidateLine line(mBoundaries.longest() + 4);
    bool afterCr = false;
    while (ReaderWindow::fill(mReader)) {
      const std::string_view window = ReaderWindow::buffered(mReader);
      if (afterCr) {
        if (window.front() == '\n') step(window.substr(0, 1));
        break;
      }
      const char* const lineEnd = findLineEnd(window.data(), window.data() + window.size());
      const auto length = static_cast<std::size_t>(lineEnd - window.data());
      line.add(window.substr(0, length));
      if (length == window.size()) {
        step(window);
        continue;
      }
      afterCr = *lineEnd == '\r';
      step(window.substr(0, length + 1));
      if (!afterCr) break;
    }
    return line.tooLong() ? BoundaryMatch{} : mBoundaries.match(line.text());
  }

  VoMsgBufferedReader& mReader;
  const BoundaryTable& mBoundaries;
  BodyEnd mResult;
  std::uint64_t mOffset = 0;
  unsigned mTerminator = 0;  // of the line before the position; 0 at the start of the scan
  char mLast = '\0';         // the byte before the position
  bool mAtLineStart = true;
};

}  // namespace

const char* findHyphenLine(const char* from, const char* end) {
#if defined(__SSE2__)
  const __m128i hyphen = _mm_set1_epi8('-');
  const __m128i cr = _mm_set1_epi8('\r');
  const __m128i lf = _mm_set1_epi8('\n');
  const auto load = [](const char* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); };
  const auto pairs = [&](const char* at) {
    return _mm_and_si128(_mm_cmpeq_epi8(load(at), hyphen), _mm_cmpeq_epi8(load(at + 1), hyphen));
  };
  while (end - from > 64) {
    const __m128i a = pairs(from);
    const __m128i b = pairs(from + 16);
    const __m128i c = pairs(from + 32);
    const __m128i d = pairs(from + 48);
    if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) != 0) {
      const __m128i found[4] = {a, b, c, d};
      for (int i = 0; i < 4; ++i) {
        const __m128i before = load(from + 16 * i - 1);
        const __m128i starts = _mm_or_si128(_mm_cmpeq_epi8(before, cr), _mm_cmpeq_epi8(before, lf));
        const int mask = _mm_movemask_epi8(_mm_and_si128(found[i], starts));
        if (mask) return from + 16 * i + __builtin_ctz(static_cast<unsigned>(mask));
      }
    }
    from += 64;
  }
#endif
  while (from < end) {
    from = static_cast<const char*>(std::memchr(from, '-', static_cast<std::size_t>(end - from)));
    if (!from) return end;
    if (isLineEnd(from[-1]) && (from + 1 == end || from[1] == '-')) return from;
    ++from;
  }
  return end;
}

BodyEnd findBodyEnd(VoMsgBufferedReader& reader, const BoundaryTable& boundaries) {
  if (!boundaries.empty()) return Scan(reader, boundaries).run();
  BodyEnd end;
  end.lineOffset = end.lineEnd = reader.getSize();
  if (reader.rseek(0, 2) < 0) end.lineOffset = end.lineEnd = reader.getOffset();
  return end;
}

}  // namespace vomsg::detail
