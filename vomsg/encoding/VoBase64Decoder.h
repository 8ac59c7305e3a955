// Base64 decoding of memory, piece by piece. A kernel takes clean stretches at the processor's best speed;
// everything a kernel does not understand goes through the exact rule, one sextet at a time, so that a text
// decodes alike however it is cut and whichever kernel runs.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vomsg::detail {

// Decodes groups of four alphabet characters, stepping over line ends between groups, until it meets anything
// else or little is left. Advances `out`, may write up to kBase64Slack bytes past it, and returns where it stopped.
using Base64Kernel = const unsigned char* (*)(const unsigned char* in, const unsigned char* end, unsigned char*& out);

inline constexpr std::size_t kBase64Slack = 32;

const unsigned char* decodeBase64Portable(const unsigned char* in, const unsigned char* end, unsigned char*& out);
// Vector kernels of x86 processors: null when this build or this processor has none.
Base64Kernel base64KernelSsse3();
Base64Kernel base64KernelAvx2();
Base64Kernel bestBase64Kernel();

class Base64Decoder {
 public:
  explicit Base64Decoder(Base64Kernel kernel = bestBase64Kernel()) : mKernel(kernel) {}
  // Decodes the next `n` characters and returns the number of bytes completed. `out` has room for
  // n / 4 * 3 + 3 + kBase64Slack.
  std::size_t decode(const char* in, std::size_t n, char* out);

 private:
  const unsigned char* decodeExact(const unsigned char* in, const unsigned char* end, unsigned char*& out);

  Base64Kernel mKernel;
  std::uint32_t mBits = 0;  // the sextets of the open group
  unsigned mCount = 0;      // how many they are, 0 to 3
};

}  // namespace vomsg::detail
