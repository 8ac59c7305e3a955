// Counts letters and letter pairs of a text for many single-byte models in one pass. All that a byte, or a pair of
// bytes, means to all the models stands in one word, a few bits for each model; what is counted are the bits.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

struct SequenceModel;

namespace vomsg::detail {

constexpr unsigned char kFrequentLetters = 64;  // orders below are those of the frequent letters
constexpr unsigned char kSymbols = 250;         // orders from here on are those of no letter at all

// What a stretch of text adds to what is known of it in one model.
struct SequenceCounts {
  unsigned chars = 0;      // bytes of an order below kSymbols
  unsigned frequent = 0;   // frequent letters
  unsigned pairs[4] = {};  // of two frequent letters, by category
};

class SequenceCounter {
 public:
  static constexpr unsigned kMostModels = 16;
  static constexpr unsigned kMostBytes = 1024;

  // Of at most kMostModels, borrowed for good. Throws std::bad_alloc.
  explicit SequenceCounter(std::span<const SequenceModel* const> models);

  // Counts the bytes behind the first, at most kMostBytes in all, and the pairs that each makes with the one before;
  // `counts[i]` is set for the model with index i. The first byte pairs with one that the caller knows.
  void count(const char* data, unsigned length, std::span<SequenceCounts> counts) const;

 private:
  unsigned mClasses = 0;
  unsigned char mClassOf[256];          // bytes that no model tells apart share a class
  std::vector<std::uint64_t> mLetters;  // by class: bit m for a character in model m, bit 16 + m for a frequent letter
  std::vector<std::uint64_t> mPairs;    // by class before x mClasses + class: bit 4 x m + category in model m, or none
};

}  // namespace vomsg::detail
