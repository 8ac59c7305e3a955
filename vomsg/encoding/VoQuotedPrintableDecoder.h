// Quoted-printable decoding of memory, window by window. Between two "=" nothing but copying happens, which a
// kernel does a block at a time; "=" and what follows it go through the exact rule.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vomsg::detail {

// Copies from `in` up to the first "=" or `end`, advances `out`, may write up to kLiteralSlack bytes past it, and
// returns where it stopped.
using LiteralKernel = const unsigned char* (*)(const unsigned char* in, const unsigned char* end, unsigned char*& out);

inline constexpr std::size_t kLiteralSlack = 32;

const unsigned char* copyLiteralPortable(const unsigned char* in, const unsigned char* end, unsigned char*& out);
// Vector kernels of x86 processors: null when this build or this processor has none.
LiteralKernel literalKernelSse2();
LiteralKernel literalKernelAvx2();
LiteralKernel bestLiteralKernel();

// What lies at the reading position of the decoder when the window ends there.
struct QuotedPrintableState {
  std::int64_t remaining = 0;  // of the encoded length; a bare LF after "=" counts twice and may take it below 0
  bool softBreak = false;      // "=" without two hex digits was seen, and no line end since
};

// Decodes from `in` until the length is used up, the window ends, or a decision needs bytes behind `end`. Returns
// where it stopped. `out` has room for end - in + kLiteralSlack.
const unsigned char* decodeQuotedPrintableWindow(QuotedPrintableState& state, const unsigned char* in,
                                                 const unsigned char* end, unsigned char*& out,
                                                 LiteralKernel copyLiteral = bestLiteralKernel());

}  // namespace vomsg::detail
