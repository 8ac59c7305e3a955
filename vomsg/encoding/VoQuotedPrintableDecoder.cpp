#include "vomsg/encoding/VoQuotedPrintableDecoder.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "vomsg/encoding/VoHexChar.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace vomsg::detail {

namespace {

constexpr std::array<signed char, 256> kHexValues = [] {
  std::array<signed char, 256> table{};
  for (int c = 0; c < 256; ++c) {
    int value = -1;
    if (c >= '0' && c <= '9') value = c - '0';
    if (c >= 'A' && c <= 'F') value = c - 'A' + 10;
    if (c >= 'a' && c <= 'f') value = c - 'a' + 10;
    table[static_cast<std::size_t>(c)] = static_cast<signed char>(value);
  }
  return table;
}();

}  // namespace

const unsigned char* copyLiteralPortable(const unsigned char* in, const unsigned char* end, unsigned char*& out) {
  constexpr std::uint64_t kOnes = 0x0101010101010101u;
  while (end - in >= 8) {
    std::uint64_t block;
    std::memcpy(&block, in, 8);
    const std::uint64_t different = block ^ kOnes * '=';
    if (((different - kOnes) & ~different & kOnes << 7) != 0) break;
    std::memcpy(out, in, 8);
    in += 8;
    out += 8;
  }
  while (in < end && *in != '=') *out++ = *in++;
  return in;
}

#if defined(__x86_64__) || defined(__i386__)

namespace {

__attribute__((target("sse2"))) const unsigned char* copyLiteralSse2(const unsigned char* in, const unsigned char* end,
                                                                     unsigned char*& out) {
  const __m128i equals = _mm_set1_epi8('=');
  while (end - in >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), block);
    const unsigned found = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, equals)));
    const unsigned n = found ? static_cast<unsigned>(__builtin_ctz(found)) : 16;
    in += n;
    out += n;
    if (found) return in;
  }
  return copyLiteralPortable(in, end, out);
}

__attribute__((target("avx2"))) const unsigned char* copyLiteralAvx2(const unsigned char* in, const unsigned char* end,
                                                                     unsigned char*& out) {
  const __m256i equals = _mm256_set1_epi8('=');
  while (end - in >= 32) {
    const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), block);
    const unsigned found = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(block, equals)));
    const unsigned n = found ? static_cast<unsigned>(__builtin_ctz(found)) : 32;
    in += n;
    out += n;
    if (found) return in;
  }
  return copyLiteralPortable(in, end, out);
}

}  // namespace

LiteralKernel literalKernelSse2() { return __builtin_cpu_supports("sse2") ? &copyLiteralSse2 : nullptr; }
LiteralKernel literalKernelAvx2() { return __builtin_cpu_supports("avx2") ? &copyLiteralAvx2 : nullptr; }

#else

LiteralKernel literalKernelSse2() { return nullptr; }
LiteralKernel literalKernelAvx2() { return nullptr; }

#endif

LiteralKernel bestLiteralKernel() {
  static const LiteralKernel best = [] {
    if (LiteralKernel kernel = literalKernelAvx2()) return kernel;
    if (LiteralKernel kernel = literalKernelSse2()) return kernel;
    return &copyLiteralPortable;
  }();
  return best;
}

const unsigned char* decodeQuotedPrintableWindow(QuotedPrintableState& state, const unsigned char* in,
                                                 const unsigned char* end, unsigned char*& out,
                                                 LiteralKernel copyLiteral) {
  while (state.remaining > 0 && in < end) {
    if (!state.softBreak && *in != '=') {
      const unsigned char* const start = in;
      in = copyLiteral(in, in + std::min<std::int64_t>(end - in, state.remaining), out);
      state.remaining -= in - start;
      continue;
    }
    switch (*in) {
      case '=': {
        // Both digits are looked at even when the length ends before them.
        if (end - in < 3) return in;
        const int high = kHexValues[in[1]], low = kHexValues[in[2]];
        if ((high | low) >= 0) {
          *out++ = static_cast<unsigned char>(high << 4 | low);
          in += 3;
          state.remaining -= 3;
        } else if (in[1] == '\r' && in[2] == '\n' && state.remaining >= 2) {
          state.softBreak = false;
          in += 3;
          state.remaining -= 3;
        } else {
          state.softBreak = true;
          in += 1;
          state.remaining -= 1;
        }
        break;
      }
      case '\t':
      case ' ':
        in += 1;
        state.remaining -= 1;
        break;
      case '\n':
        // Counted twice on purpose: every soft break that ends in a bare LF ends the decoding one byte earlier.
        state.softBreak = false;
        in += 1;
        state.remaining -= 2;
        break;
      case '\r':
        if (end - in < 2) return in;
        if (in[1] == '\n') {
          state.softBreak = false;
          in += 2;
          state.remaining -= 2;
          break;
        }
        [[fallthrough]];
      default:
        *out++ = *in++;
        state.remaining -= 1;
    }
  }
  return in;
}

}  // namespace vomsg::detail
