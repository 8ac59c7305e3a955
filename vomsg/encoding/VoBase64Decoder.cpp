#include "vomsg/encoding/VoBase64Decoder.h"

#include "vomsg/encoding/VoBase64.h"

namespace vomsg::detail {

namespace {

// What the exact rule handles before a kernel is tried again: long enough that a kernel which finds nothing to
// do costs little beside it, short enough to be back soon after one stray character.
constexpr std::ptrdiff_t kExactStretch = 64;

}  // namespace

const unsigned char* decodeBase64Portable(const unsigned char* in, const unsigned char* end, unsigned char*& out) {
  unsigned char* to = out;
  while (end - in >= 4) {
    const std::int32_t a = base64table_int[in[0]], b = base64table_int[in[1]];
    const std::int32_t c = base64table_int[in[2]], d = base64table_int[in[3]];
    if ((a | b | c | d) < 0) {
      if (in[0] == '\r' && in[1] == '\n') {
        in += 2;
      } else if (in[0] == '\n') {
        in += 1;
      } else {
        break;
      }
      continue;
    }
    to[0] = static_cast<unsigned char>(a << 2 | b >> 4);
    to[1] = static_cast<unsigned char>(b << 4 | c >> 2);
    to[2] = static_cast<unsigned char>(c << 6 | d);
    to += 3;
    in += 4;
  }
  out = to;
  return in;
}

Base64Kernel bestBase64Kernel() {
  static const Base64Kernel best = [] {
    if (Base64Kernel kernel = base64KernelAvx2()) return kernel;
    if (Base64Kernel kernel = base64KernelSsse3()) return kernel;
    return &decodeBase64Portable;
  }();
  return best;
}

std::size_t Base64Decoder::decode(const char* in, std::size_t n, char* out) {
  auto at = reinterpret_cast<const unsigned char*>(in);
  const auto end = at + n;
  const auto start = reinterpret_cast<unsigned char*>(out);
  unsigned char* to = start;
  while (at < end) {
    if (mCount == 0) at = mKernel(at, end, to);
    at = decodeExact(at, end - at > kExactStretch ? at + kExactStretch : end, to);
    while (mCount != 0 && at < end) at = decodeExact(at, at + 1, to);
  }
  return static_cast<std::size_t>(to - start);
}

const unsigned char* Base64Decoder::decodeExact(const unsigned char* in, const unsigned char* end,
                                                unsigned char*& out) {
  for (; in < end; ++in) {
    const std::int32_t sextet = base64table_int[*in];
    if (sextet < 0) continue;
    mBits = mBits << 6 | static_cast<std::uint32_t>(sextet);
    // The first sextet of a group completes nothing; each further one completes the byte it reaches into.
    if (mCount == 1) *out++ = static_cast<unsigned char>(mBits >> 4);
    if (mCount == 2) *out++ = static_cast<unsigned char>(mBits >> 2);
    if (mCount == 3) *out++ = static_cast<unsigned char>(mBits);
    mCount = (mCount + 1) & 3;
  }
  return in;
}

}  // namespace vomsg::detail
