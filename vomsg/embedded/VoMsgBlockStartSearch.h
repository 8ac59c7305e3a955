// Looks through a text, as fast as memory comes, for lines that begin like an encoded block: "begin " with a mode, or
// the marker of BinHex. Nearly all text has none, so this is all that most bodies ever cost. The text comes in
// stretches of any length and is not kept.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vomsg::detail {

class BlockStartSearch {
 public:
  // True as soon as a line begins like a block; such a line may lie across stretches. The first byte fed starts a line.
  bool feed(std::string_view stretch);
  // Where that line begins, counted from the first byte fed.
  std::uint64_t lineOffset() const { return mLine; }

 private:
  enum class Verdict : std::uint8_t { no, yes, more };  // more: alike so far, but the stretch ends here
  static Verdict judge(std::string_view line);

  static constexpr std::size_t kEnough = 45;  // of a line, to tell

  std::uint64_t mOffset = 0;  // of the next stretch
  std::uint64_t mLine = 0;
  bool mAtLineStart = true;
  std::array<char, kEnough> mOpen;  // the beginning of a line that goes on in the next stretch
  std::size_t mOpenSize = 0;
};

// The first character of [begin + 1, end) that is "b" or "(" and follows a CR or an LF; `end` when there is none.
using LineStartKernel = const char* (*)(const char* begin, const char* end);
const char* findLineStartPortable(const char* begin, const char* end);
// Vector kernels of x86 processors: null when this build or this processor has none.
LineStartKernel lineStartKernelSse2();
LineStartKernel lineStartKernelAvx2();

}  // namespace vomsg::detail
