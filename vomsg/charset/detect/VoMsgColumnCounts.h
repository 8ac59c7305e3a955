// In how many of a row of words each bit is set. Asked bit by bit that takes an operation for each bit of each word;
// here the words are added column by column, as a binary adder does it: eight words become one carry of weight eight,
// and only that one is taken apart.
#pragma once

#include <cstdint>

namespace vomsg::detail {

// 128 bits that go through an operation together; a register where the machine has such ones.
using ColumnWord [[gnu::vector_size(16)]] = std::uint64_t;

class ColumnCounts {
 public:
  static constexpr unsigned kMostWords = 8 * 255;  // what is taken apart is counted in bytes

  void add(const ColumnWord (&words)[8]) {
    const ColumnWord twos[] = {sumInto(mOnes, words[0], words[1]), sumInto(mOnes, words[2], words[3]),
                               sumInto(mOnes, words[4], words[5]), sumInto(mOnes, words[6], words[7])};
    const ColumnWord fours[] = {sumInto(mTwos, twos[0], twos[1]), sumInto(mTwos, twos[2], twos[3])};
    const ColumnWord eights = sumInto(mFours, fours[0], fours[1]);
    for (unsigned bit = 0; bit < 8; ++bit) mEights[bit] += eights >> bit & kLowestBits;
  }

  // How many of the words had the bit; columns 64 to 127 are those of the second half.
  unsigned operator[](unsigned column) const {
    const unsigned half = column / 64, bit = column % 64;
    const auto bitOf = [&](const ColumnWord& word) { return static_cast<unsigned>(word[half] >> bit & 1); };
    const auto eights = static_cast<unsigned>(mEights[bit % 8][half] >> (bit - bit % 8) & 0xFF);
    return 8 * eights + 4 * bitOf(mFours) + 2 * bitOf(mTwos) + bitOf(mOnes);
  }

 private:
  static constexpr ColumnWord kLowestBits = {0x0101010101010101, 0x0101010101010101};  // of each byte

  // Adds both words to `sum` in every column; returns what is carried.
  static ColumnWord sumInto(ColumnWord& sum, const ColumnWord& a, const ColumnWord& b) {
    const ColumnWord odd = sum ^ a;
    const ColumnWord carry = (sum & a) | (odd & b);
    sum = odd ^ b;
    return carry;
  }

  ColumnWord mOnes = {};
  ColumnWord mTwos = {};
  ColumnWord mFours = {};
  ColumnWord mEights[8] = {};  // a byte for each column: bit n of byte m is counted in byte m of mEights[n]
};

}  // namespace vomsg::detail
