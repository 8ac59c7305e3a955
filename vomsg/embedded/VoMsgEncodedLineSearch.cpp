// A block begins with "b" or "(" at the start of a decoded line. In the encoded text that character stands, itself or
// as
// "=" with two digits, behind a line end, be it a hard or a soft one; or behind an encoded line end. So the search
// looks at three things:
//
//   LF, then "b", "(" or "="   the first character, perhaps; for a literal one the next ones must go on like a block
//   CR, then these or a blank  a lone CR: within a line with a broken "=" the decoder drops blanks, so nothing is sure
//   "=0"                       an encoded line end, perhaps
//
// An "=" where a character of the block is expected leaves the answer to the decoder.
#include "vomsg/embedded/VoMsgEncodedLineSearch.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgStreamAccess.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vomsg::detail {

namespace {

constexpr std::string_view kBegin = "begin ";
constexpr std::size_t kKept = 64;  // no look at a start goes farther
static_assert(kBinHexMarker.size() + 2 <= kKept);

enum class Verdict : std::uint8_t { no, maybe, more };  // more: it depends on bytes behind the end

constexpr bool isFirstOfBlock(char c) { return c == kBegin.front() || c == kBinHexMarker.front() || c == '='; }

// The character that "=" at the start of `text` stands for.
Verdict judgeEncoded(std::string_view text) {
  if (text.size() < 3) return Verdict::more;
  if (text[1] == '\n' || (text[1] == '\r' && text[2] == '\n')) return Verdict::no;  // what follows is looked at anyway
  const auto digit = [](char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = toLower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
  };
  const int high = digit(text[1]), low = digit(text[2]);
  if (high < 0 || low < 0) return Verdict::maybe;
  const char c = static_cast<char>(high << 4 | low);
  return isFirstOfBlock(c) || isLineEnd(c) ? Verdict::maybe : Verdict::no;
}

Verdict judgeLiteral(std::string_view text) {
  const std::string_view wanted = text.front() == kBegin.front() ? kBegin : kBinHexMarker;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (i == text.size()) return Verdict::more;
    if (text[i] == '=') return Verdict::maybe;
    if (toLower(text[i]) != toLower(wanted[i])) return Verdict::no;
  }
  return Verdict::maybe;
}

Verdict judgeStart(std::string_view text) {
  if (text.empty()) return Verdict::more;
  if (text.front() == '=') return judgeEncoded(text);
  return isFirstOfBlock(text.front()) ? judgeLiteral(text) : Verdict::no;
}

// Of a position that findEncodedStart() found.
Verdict judge(std::string_view text) {
  if (text.front() == '\n') return judgeStart(text.substr(1));
  if (text.front() == '\r') return Verdict::maybe;
  return judgeEncoded(text);
}

// Starts whose bytes are not all here are left out: the caller shows them again.
bool searchStretch(std::string_view text) {
  const char* const end = text.data() + text.size();
  for (const char* at = findEncodedStart(text.data(), end); at != end; at = findEncodedStart(at + 1, end))
    if (judge({at, static_cast<std::size_t>(end - at)}) == Verdict::maybe) return true;
  return false;
}

constexpr bool needsALook(char c, char next) {
  if (c == '=') return next == '0';
  return (c == '\n' && isFirstOfBlock(next)) || (c == '\r' && (isFirstOfBlock(next) || isBlank(next)));
}

}  // namespace

const char* findEncodedStartPortable(const char* begin, const char* end) {
  for (; end - begin > 1; ++begin)
    if (needsALook(begin[0], begin[1])) return begin;
  return end;
}

const char* findEncodedStart(const char* begin, const char* end) {
#if defined(__SSE2__)
  const auto is = [](__m128i bytes, char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
  for (; end - begin > 16; begin += 16) {
    const __m128i at = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin));
    const __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin + 1));
    const __m128i first =
        _mm_or_si128(_mm_or_si128(is(next, kBegin.front()), is(next, kBinHexMarker.front())), is(next, '='));
    const __m128i orBlank = _mm_or_si128(_mm_or_si128(first, is(next, ' ')), is(next, '\t'));
    const __m128i hits =
        _mm_or_si128(_mm_and_si128(is(at, '\n'), first),
                     _mm_or_si128(_mm_and_si128(is(at, '\r'), orBlank), _mm_and_si128(is(at, '='), is(next, '0'))));
    const int mask = _mm_movemask_epi8(hits);
    if (mask) return begin + __builtin_ctz(static_cast<unsigned>(mask));
  }
#endif
  return findEncodedStartPortable(begin, end);
}

bool mayBeginBlock(VoMsgBufferedReader& text, std::uint64_t length) {
  std::string kept;  // the end of the windows so far, shown again with what follows
  std::string joined;
  bool isFirst = true;
  while (length > 0 && ReaderWindow::fill(text)) {
    const std::string_view window =
        ReaderWindow::buffered(text).substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(length, SIZE_MAX)));
    length -= window.size();
    std::string_view stretch = window;
    if (!isFirst) {
      joined.assign(kept).append(window);
      stretch = joined;
    } else if (window.size() < kKept && length > 0) {
      return true;  // not worth the care that windows this small would need at the start
    } else if (judgeStart(window) == Verdict::maybe) {
      return true;
    }
    if (searchStretch(stretch)) return true;
    ReaderWindow::consume(text, window.size());
    if (length == 0) break;
    kept.assign(stretch.substr(stretch.size() - std::min(stretch.size(), kKept)));
    isFirst = false;
  }
  return false;
}

}  // namespace vomsg::detail
