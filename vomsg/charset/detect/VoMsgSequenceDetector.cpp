// Thirteen of these see every byte of a text that nobody else claims, so the loop decides how fast detection is. It has
// no branch and keeps all counters of a strip in two registers: a byte's entry adds to two counters at once, the
// category of a pair to one of four. Bytes that are no frequent letter take a row and a column of their own, whose
// pairs add nothing.
#include "vomsg/charset/detect/VoMsgSequenceDetector.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>

namespace vomsg::detail {

// What a strip adds to a session.
struct SequenceCounts {
  unsigned chars;
  unsigned frequent;
  unsigned pairs[4];
};

class SequenceTables {
 public:
  static constexpr unsigned kLongestStrip = 65535;  // a counter has 16 bits

  explicit SequenceTables(const SequenceModel& model) {
    for (unsigned byte = 0; byte < mEntries.size(); ++byte) {
      const unsigned order = model.charToOrderMap[byte];
      mEntries[byte] = rowOf(order) | (order < kSymbols ? kChar : 0) | (order < kLetters ? kFrequent : 0);
    }
    for (auto& row : mPairs) row.fill(kNoPair);
    for (unsigned pair = 0; pair < kLetters * kLetters; ++pair)
      mPairs[pair / kLetters][pair % kLetters] = model.precedenceMatrix[pair] & 3;
  }

  // Counts the bytes, of which the one before had the order `lastOrder`.
  SequenceCounts count(unsigned lastOrder, const char* data, unsigned length) const {
    static constexpr std::uint64_t kAdd[] = {1, 1ull << 16, 1ull << 32, 1ull << 48, 0};
    std::uint64_t chars = 0;
    std::uint64_t pairs = 0;
    unsigned last = rowOf(lastOrder);
    for (unsigned i = 0; i < length; ++i) {
      const std::uint64_t entry = mEntries[static_cast<unsigned char>(data[i])];
      const unsigned row = entry & 0x7F;
      chars += entry;  // the rows add up too, and stay below bit 32
      pairs += kAdd[mPairs[last][row]];
      last = row;
    }
    const auto field = [](std::uint64_t sums, unsigned at) { return static_cast<unsigned>(sums >> at & 0xFFFF); };
    return {
        field(chars, 32), field(chars, 48), {field(pairs, 0), field(pairs, 16), field(pairs, 32), field(pairs, 48)}};
  }

 private:
  static constexpr unsigned kLetters = 64;   // orders of frequent letters
  static constexpr unsigned kSymbols = 250;  // orders from here on are no characters to count
  static constexpr std::uint64_t kChar = 1ull << 32;
  static constexpr std::uint64_t kFrequent = 1ull << 48;
  static constexpr std::uint8_t kNoPair = 4;

  static unsigned rowOf(unsigned order) { return std::min(order, kLetters); }

  std::array<std::uint64_t, 256> mEntries;
  std::array<std::array<std::uint8_t, 128>, kLetters + 1> mPairs;  // rows at a power of two; 65 columns are in use
};

}  // namespace vomsg::detail

namespace {
constexpr int kMostCounted = 1 << 30;  // a text of 2 GiB must not overflow the counters
}  // namespace

VoMsgSequenceDetectorSession::VoMsgSequenceDetectorSession(VoMsgCharSetDetector* detector)
    : VoMsgDetectorSession(detector) {}

VoMsgSequenceDetector::VoMsgSequenceDetector(const SequenceModel* sequenceModel)
    : model(sequenceModel), mTables(std::make_unique<vomsg::detail::SequenceTables>(*sequenceModel)) {}

VoMsgSequenceDetector::~VoMsgSequenceDetector() = default;

VoMsgDetectorSession* VoMsgSequenceDetector::handleData(const char* data, unsigned length,
                                                        VoMsgDetectorSession* session) {
  if (!session) return nullptr;
  auto& counted = *static_cast<VoMsgSequenceDetectorSession*>(session);
  while (length > 0 && counted.totalChar < kMostCounted) {
    const unsigned strip = std::min(length, vomsg::detail::SequenceTables::kLongestStrip);
    const vomsg::detail::SequenceCounts counts = mTables->count(counted.lastOrder, data, strip);
    counted.totalChar += static_cast<int>(counts.chars);
    counted.freqChar += static_cast<int>(counts.frequent);
    for (unsigned category = 0; category < 4; ++category) {
      counted.seqCounters[category] += static_cast<int>(counts.pairs[category]);
      counted.totalSeqs += static_cast<int>(counts.pairs[category]);
    }
    counted.lastOrder = model->charToOrderMap[static_cast<unsigned char>(data[strip - 1])];
    data += strip;
    length -= strip;
  }
  if (session->getState() == VoMsgDetectorSession::kDetecting && counted.totalSeqs >= kEnough &&
      getConfidence(session) >= kSureThing)
    session->setState(VoMsgDetectorSession::kFound);
  return session;
}

const char* VoMsgSequenceDetector::getCharSetName(VoMsgDetectorSession*) { return model->charsetName; }

VoMsgDetectorSession* VoMsgSequenceDetector::createSession() {
  return new (std::nothrow) VoMsgSequenceDetectorSession(this);
}

// Computed in extended precision, from the left and from single-precision constants, and rounded once: the decision
// must be the same on every build. The factor 1.2 raises what texts of real mail reach, with names and quotes in
// between.
float VoMsgSequenceDetector::getConfidence(VoMsgDetectorSession* session) {
  if (!session) return 0.01f;
  const auto& counted = *static_cast<VoMsgSequenceDetectorSession*>(session);
  if (counted.totalSeqs < 1) return 0.01f;
  long double confidence = 1.2f;
  confidence = confidence * counted.seqCounters[3] / counted.totalSeqs / model->typicalPositiveRatio;
  confidence = confidence * counted.freqChar / counted.totalChar;
  return confidence >= 1.0f ? 0.99f : static_cast<float>(confidence);
}
