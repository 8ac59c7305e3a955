// The vector kernels for base64 on x86 processors, chosen at run time: the build itself assumes no more than the
// baseline instruction set.
//
// A character's class follows from its two nibbles: the alphabet is a few ranges, each of which has a bit. The
// table of the high nibble says which ranges such characters can be in, that of the low nibble which ranges hold
// it; a character is clean when both agree on a range. The value is then the character plus an offset that
// depends on the high nibble alone ("/" excepted, which borrows an unused row). Four sextets become three bytes
// with two multiply-and-add instructions.
#include "vomsg/encoding/VoBase64Decoder.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>

#include <array>
#include <string_view>

namespace vomsg::detail {

namespace {

using Nibbles = std::array<signed char, 16>;

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int kSlashRow = 1;  // no alphabet character has the high nibble 1

// Rows 4 and 6, and 5 and 7, hold the same low nibbles and share a bit.
constexpr signed char rangeOfHigh(int high) {
  switch (high) {
    case 2:
      return 1;
    case 3:
      return 2;
    case 4:
    case 6:
      return 4;
    case 5:
    case 7:
      return 8;
    default:
      return 0;
  }
}

constexpr Nibbles kHighRanges = [] {
  Nibbles table{};
  for (int high = 0; high < 16; ++high) table[static_cast<std::size_t>(high)] = rangeOfHigh(high);
  return table;
}();

constexpr Nibbles kLowRanges = [] {
  Nibbles table{};
  for (const char c : kAlphabet) {
    auto& entry = table[static_cast<std::size_t>(c & 15)];
    entry = static_cast<signed char>(entry | rangeOfHigh(c >> 4));
  }
  return table;
}();

constexpr Nibbles kOffsets = [] {
  Nibbles table{};
  for (std::size_t value = 0; value < kAlphabet.size(); ++value) {
    const int c = kAlphabet[value];
    const int row = c == '/' ? kSlashRow : c >> 4;
    table[static_cast<std::size_t>(row)] = static_cast<signed char>(static_cast<int>(value) - c);
  }
  return table;
}();

constexpr Nibbles kPack = {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1};

// Takes the `clean` leading characters of a block: whole groups, then a line end when the rest is one. False when
// it is not. The caller guarantees two readable characters behind a block.
inline bool stepOverBlock(const unsigned char*& in, unsigned char*& out, unsigned clean) {
  in += clean & ~3u;
  out += clean / 4 * 3;
  if ((clean & 3u) != 0) return false;
  if (in[0] == '\n') {
    in += 1;
    return true;
  }
  if (in[0] != '\r' || in[1] != '\n') return false;
  in += 2;
  return true;
}

__attribute__((target("ssse3"), always_inline)) inline __m128i load(const Nibbles& table) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(table.data()));
}

__attribute__((target("avx2"), always_inline)) inline __m256i twice(const Nibbles& table) {
  return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table.data())));
}

__attribute__((target("ssse3"))) const unsigned char* decodeSsse3(const unsigned char* in, const unsigned char* end,
                                                                  unsigned char*& out) {
  const __m128i highRanges = load(kHighRanges), lowRanges = load(kLowRanges);
  const __m128i offsets = load(kOffsets), pack = load(kPack);
  const __m128i nibble = _mm_set1_epi8(15), slash = _mm_set1_epi8('/'), zero = _mm_setzero_si128();
  unsigned char* to = out;
  while (end - in >= 16 + 2) {
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i high = _mm_and_si128(_mm_srli_epi32(text, 4), nibble);
    // A byte with its top bit set selects zero, so that eight-bit bytes are in no range.
    const __m128i range = _mm_and_si128(_mm_shuffle_epi8(lowRanges, text), _mm_shuffle_epi8(highRanges, high));
    const unsigned dirty = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(range, zero)));
    const __m128i row = _mm_add_epi8(high, _mm_cmpeq_epi8(text, slash));
    const __m128i sextets = _mm_add_epi8(text, _mm_shuffle_epi8(offsets, row));
    const __m128i pairs = _mm_maddubs_epi16(sextets, _mm_set1_epi32(0x01400140));
    const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_shuffle_epi8(groups, pack));
    if (dirty == 0) {
      in += 16;
      to += 12;
    } else if (!stepOverBlock(in, to, static_cast<unsigned>(__builtin_ctz(dirty)))) {
      break;
    }
  }
  out = to;
  return in;
}

__attribute__((target("avx2"))) const unsigned char* decodeAvx2(const unsigned char* in, const unsigned char* end,
                                                                unsigned char*& out) {
  const __m256i highRanges = twice(kHighRanges), lowRanges = twice(kLowRanges);
  const __m256i offsets = twice(kOffsets), pack = twice(kPack);
  const __m256i nibble = _mm256_set1_epi8(15), slash = _mm256_set1_epi8('/'), zero = _mm256_setzero_si256();
  const __m256i join = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);  // the 12 bytes of each half, side by side
  unsigned char* to = out;
  while (end - in >= 32 + 2) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(text, 4), nibble);
    const __m256i range = _mm256_and_si256(_mm256_shuffle_epi8(lowRanges, text), _mm256_shuffle_epi8(highRanges, high));
    const unsigned dirty = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(range, zero)));
    const __m256i row = _mm256_add_epi8(high, _mm256_cmpeq_epi8(text, slash));
    const __m256i sextets = _mm256_add_epi8(text, _mm256_shuffle_epi8(offsets, row));
    const __m256i pairs = _mm256_maddubs_epi16(sextets, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i packed = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, pack), join);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), packed);
    if (dirty == 0) {
      in += 32;
      to += 24;
    } else if (!stepOverBlock(in, to, static_cast<unsigned>(__builtin_ctz(dirty)))) {
      break;
    }
  }
  out = to;
  return in;
}

}  // namespace

Base64Kernel base64KernelSsse3() { return __builtin_cpu_supports("ssse3") ? &decodeSsse3 : nullptr; }
Base64Kernel base64KernelAvx2() { return __builtin_cpu_supports("avx2") ? &decodeAvx2 : nullptr; }

}  // namespace vomsg::detail

#else

namespace vomsg::detail {

Base64Kernel base64KernelSsse3() { return nullptr; }
Base64Kernel base64KernelAvx2() { return nullptr; }

}  // namespace vomsg::detail

#endif
