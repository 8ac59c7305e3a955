// Finds the uuencode and BinHex blocks in a text.
//
//   uuencode  a valid "begin" line; then data lines, or directly the line for zero bytes and "end". The block reaches
//             to "end", or as far as lines are data. A "begin" that nothing of the kind follows is prose.
//   BinHex    the marker line; then, perhaps after empty lines, a line that starts with ":". The block reaches to the
//             closing ":", with nothing but the alphabet in between, and its header must be sound.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

class VoMsgBufferedReader;

namespace vomsg::detail {

enum class EmbeddedKind : std::uint8_t { text, uuencode, binHex };

struct EmbeddedPiece {
  EmbeddedKind kind = EmbeddedKind::text;
  std::uint32_t offset = 0;
  std::uint32_t size = 0;  // whole lines, except where text follows a closing ":"
};

class EmbeddedScanner {
 public:
  // Looks through [begin, end) of `text`; `begin` counts as the start of a line.
  EmbeddedScanner(VoMsgBufferedReader& text, std::uint32_t begin, std::uint32_t end)
      : mText(text), mAt(begin), mEnd(end) {}

  // The next block; false when there is no more. Every line is looked at a fixed number of times.
  bool next(EmbeddedPiece& block);

 private:
  // No data line is longer, and no "begin" line has its second blank behind this.
  static constexpr std::size_t kKept = 256;

  bool findBlockStart();
  bool readUUEncode(std::uint64_t start, EmbeddedPiece& block);
  bool readBinHex(std::uint64_t start, EmbeddedPiece& block);
  bool takeLine();
  bool isData() const;

  VoMsgBufferedReader& mText;
  std::uint64_t mAt;  // where the next line begins
  std::uint64_t mEnd;
  std::array<char, kKept> mBytes;
  std::string_view mLine;     // the beginning of the line just taken
  bool mLineIsWhole = false;  // mLine is all of it
};

}  // namespace vomsg::detail
