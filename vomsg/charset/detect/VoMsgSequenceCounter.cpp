#include "vomsg/charset/detect/VoMsgSequenceCounter.h"

#include <array>
#include <iterator>
#include <map>

#include "vomsg/charset/detect/VoMsgColumnCounts.h"
#include "vomsg/charset/detect/tables/VoMsgSequenceModels.h"

namespace vomsg::detail {

namespace {

constexpr unsigned kFrequentColumn = 16;
constexpr unsigned kLettersHalf = 64;  // the letters are the second half of a word, the pairs the first

// A byte's order in each model, as far as counting tells orders apart.
using Orders = std::array<unsigned char, SequenceCounter::kMostModels>;

unsigned char countedOrder(unsigned char order) {
  if (order < kFrequentLetters) return order;
  return order < kSymbols ? kFrequentLetters : kSymbols;
}

}  // namespace

SequenceCounter::SequenceCounter(std::span<const SequenceModel* const> models) {
  std::map<Orders, unsigned char> classes;
  std::vector<Orders> ordersOf;
  for (unsigned byte = 0; byte < std::size(mClassOf); ++byte) {
    Orders orders{};
    for (std::size_t m = 0; m < models.size(); ++m) orders[m] = countedOrder(models[m]->charToOrderMap[byte]);
    const auto [at, isNew] = classes.emplace(orders, static_cast<unsigned char>(ordersOf.size()));
    if (isNew) ordersOf.push_back(orders);
    mClassOf[byte] = at->second;
  }
  mClasses = static_cast<unsigned>(ordersOf.size());
  mLetters.resize(mClasses);
  mPairs.resize(std::size_t{mClasses} * mClasses);
  for (std::size_t m = 0; m < models.size(); ++m) {
    for (std::size_t last = 0; last < mClasses; ++last) {
      const unsigned lastOrder = ordersOf[last][m];
      if (lastOrder < kSymbols) mLetters[last] |= std::uint64_t{1} << m;
      if (lastOrder >= kFrequentLetters) continue;
      mLetters[last] |= std::uint64_t{1} << (kFrequentColumn + m);
      for (std::size_t now = 0; now < mClasses; ++now) {
        const unsigned order = ordersOf[now][m];
        if (order >= kFrequentLetters) continue;
        const unsigned category = models[m]->precedenceMatrix[lastOrder * kFrequentLetters + order] & 3;
        mPairs[last * mClasses + now] |= std::uint64_t{1} << (4 * m + category);
      }
    }
  }
}

void SequenceCounter::count(const char* data, unsigned length, std::span<SequenceCounts> counts) const {
  static_assert(kMostBytes <= ColumnCounts::kMostWords);
  ColumnCounts columns;
  unsigned last = mClassOf[static_cast<unsigned char>(data[0])];
  const auto wordOf = [&](char c) {
    const unsigned now = mClassOf[static_cast<unsigned char>(c)];
    const ColumnWord word = {mPairs[last * mClasses + now], mLetters[now]};
    last = now;
    return word;
  };
  unsigned i = 1;
  for (; i + 8 <= length; i += 8) {
    const char* const at = data + i;
    columns.add({wordOf(at[0]), wordOf(at[1]), wordOf(at[2]), wordOf(at[3]), wordOf(at[4]), wordOf(at[5]),
                 wordOf(at[6]), wordOf(at[7])});
  }
  ColumnWord rest[8] = {};
  for (unsigned n = 0; i < length; ++i, ++n) rest[n] = wordOf(data[i]);
  columns.add(rest);
  for (unsigned m = 0; m < counts.size(); ++m) {
    counts[m].chars = columns[kLettersHalf + m];
    counts[m].frequent = columns[kLettersHalf + kFrequentColumn + m];
    for (unsigned category = 0; category < 4; ++category) counts[m].pairs[category] = columns[4 * m + category];
  }
}

}  // namespace vomsg::detail
