#include "vomsg/embedded/VoMsgBlockStartSearch.h"

#include <algorithm>

#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/foundation/VoMsgAscii.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace vomsg::detail {

namespace {

constexpr std::string_view kBegin = "begin ";
static_assert(kBinHexMarker.size() == 45);

constexpr bool isFirstCharacter(char c) { return c == kBegin.front() || c == kBinHexMarker.front(); }

}  // namespace

const char* findLineStartPortable(const char* begin, const char* end) {
  for (const char* at = begin; end - at > 1; ++at)
    if (isFirstCharacter(at[1]) && isLineEnd(at[0])) return at + 1;
  return end;
}

#if defined(__x86_64__) || defined(__i386__)

namespace {

__attribute__((target("sse2"))) const char* findLineStartSse2(const char* begin, const char* end) {
  const __m128i cr = _mm_set1_epi8('\r'), lf = _mm_set1_epi8('\n');
  const __m128i first = _mm_set1_epi8(kBegin.front()), other = _mm_set1_epi8(kBinHexMarker.front());
  for (; end - begin > 16; begin += 16) {
    const __m128i before = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin));
    const __m128i at = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin + 1));
    const __m128i ends = _mm_or_si128(_mm_cmpeq_epi8(before, cr), _mm_cmpeq_epi8(before, lf));
    const __m128i starts = _mm_or_si128(_mm_cmpeq_epi8(at, first), _mm_cmpeq_epi8(at, other));
    const int found = _mm_movemask_epi8(_mm_and_si128(ends, starts));
    if (found) return begin + 1 + __builtin_ctz(static_cast<unsigned>(found));
  }
  return findLineStartPortable(begin, end);
}

__attribute__((target("avx2"))) const char* findLineStartAvx2(const char* begin, const char* end) {
  const __m256i cr = _mm256_set1_epi8('\r'), lf = _mm256_set1_epi8('\n');
  const __m256i first = _mm256_set1_epi8(kBegin.front()), other = _mm256_set1_epi8(kBinHexMarker.front());
  for (; end - begin > 32; begin += 32) {
    const __m256i before = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(begin));
    const __m256i at = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(begin + 1));
    const __m256i ends = _mm256_or_si256(_mm256_cmpeq_epi8(before, cr), _mm256_cmpeq_epi8(before, lf));
    const __m256i starts = _mm256_or_si256(_mm256_cmpeq_epi8(at, first), _mm256_cmpeq_epi8(at, other));
    const int found = _mm256_movemask_epi8(_mm256_and_si256(ends, starts));
    if (found) return begin + 1 + __builtin_ctz(static_cast<unsigned>(found));
  }
  return findLineStartPortable(begin, end);
}

}  // namespace

LineStartKernel lineStartKernelSse2() { return __builtin_cpu_supports("sse2") ? &findLineStartSse2 : nullptr; }
LineStartKernel lineStartKernelAvx2() { return __builtin_cpu_supports("avx2") ? &findLineStartAvx2 : nullptr; }

#else

LineStartKernel lineStartKernelSse2() { return nullptr; }
LineStartKernel lineStartKernelAvx2() { return nullptr; }

#endif

namespace {

const char* findLineStart(const char* begin, const char* end) {
  static const LineStartKernel best = [] {
    if (LineStartKernel kernel = lineStartKernelAvx2()) return kernel;
    if (LineStartKernel kernel = lineStartKernelSse2()) return kernel;
    return &findLineStartPortable;
  }();
  return best(begin, end);
}

}  // namespace

BlockStartSearch::Verdict BlockStartSearch::judge(std::string_view line) {
  const bool isBegin = line.front() == kBegin.front();
  const std::string_view wanted = isBegin ? kBegin : kBinHexMarker;
  const std::size_t n = std::min(line.size(), wanted.size());
  if (isBegin ? line.substr(0, n) != wanted.substr(0, n) : !equalNoCase(line.substr(0, n), wanted.substr(0, n)))
    return Verdict::no;
  if (!isBegin) return n == wanted.size() ? Verdict::yes : Verdict::more;
  if (line.size() == n) return Verdict::more;
  return line[n] == ' ' || (line[n] >= '0' && line[n] <= '7') ? Verdict::yes : Verdict::no;
}

bool BlockStartSearch::feed(std::string_view stretch) {
  if (stretch.empty()) return false;
  if (mOpenSize > 0) {
    mOpenSize += stretch.copy(mOpen.data() + mOpenSize, kEnough - mOpenSize);
    const Verdict verdict = judge({mOpen.data(), mOpenSize});
    if (verdict == Verdict::yes) return true;
    if (verdict == Verdict::no) mOpenSize = 0;
  }
  const char* const begin = stretch.data();
  const char* const end = begin + stretch.size();
  // A line that is still open reaches to the end of this stretch, so there is nothing else to find.
  const char* at = mOpenSize > 0                                       ? end
                   : mAtLineStart && isFirstCharacter(stretch.front()) ? begin
                                                                       : findLineStart(begin, end);
  for (; at != end; at = findLineStart(at, end)) {
    const std::string_view line(at, std::min<std::size_t>(kEnough, static_cast<std::size_t>(end - at)));
    const Verdict verdict = judge(line);
    if (verdict == Verdict::no) continue;
    mLine = mOffset + static_cast<std::uint64_t>(at - begin);
    if (verdict == Verdict::yes) return true;
    mOpenSize = line.copy(mOpen.data(), line.size());
    break;
  }
  mAtLineStart = isLineEnd(stretch.back());
  mOffset += stretch.size();
  return false;
}

}  // namespace vomsg::detail
