#include "vomsg/charset/detect/VoMsgSequenceDetector.h"

#include <new>

#include "vomsg/charset/detect/VoMsgSequenceCounter.h"

using vomsg::detail::kFrequentLetters;
using vomsg::detail::kSymbols;

namespace {
constexpr int kMostCounted = 1 << 30;  // a text of 2 GiB must not overflow the counters
}  // namespace

VoMsgSequenceDetectorSession::VoMsgSequenceDetectorSession(VoMsgCharSetDetector* detector)
    : VoMsgDetectorSession(detector) {}

VoMsgSequenceDetector::VoMsgSequenceDetector(const SequenceModel* sequenceModel) : model(sequenceModel) {}

VoMsgDetectorSession* VoMsgSequenceDetector::handleData(const char* data, unsigned length,
                                                        VoMsgDetectorSession* session) {
  if (!session) return nullptr;
  auto& counted = *static_cast<VoMsgSequenceDetectorSession*>(session);
  for (unsigned i = 0; i < length; ++i) learnByte(static_cast<unsigned char>(data[i]), counted);
  calculateState(counted);
  return session;
}

void VoMsgSequenceDetector::learn(const char* data, unsigned length, const vomsg::detail::SequenceCounts& rest,
                                  VoMsgDetectorSession* session) const {
  auto& counted = *static_cast<VoMsgSequenceDetectorSession*>(session);
  learnByte(static_cast<unsigned char>(data[0]), counted);
  counted.lastOrder = model->charToOrderMap[static_cast<unsigned char>(data[length - 1])];
  if (counted.totalChar >= kMostCounted) return;
  counted.totalChar += static_cast<int>(rest.chars);
  counted.freqChar += static_cast<int>(rest.frequent);
  for (unsigned category = 0; category < 4; ++category) {
    counted.seqCounters[category] += static_cast<int>(rest.pairs[category]);
    counted.totalSeqs += static_cast<int>(rest.pairs[category]);
  }
}

void VoMsgSequenceDetector::learnByte(unsigned char byte, VoMsgSequenceDetectorSession& counted) const {
  const unsigned char order = model->charToOrderMap[byte];
  if (order < kSymbols && counted.totalChar < kMostCounted) {
    ++counted.totalChar;
    if (order < kFrequentLetters) ++counted.freqChar;
    if (order < kFrequentLetters && counted.lastOrder < kFrequentLetters) {
      ++counted.totalSeqs;
      ++counted.seqCounters[model->precedenceMatrix[counted.lastOrder * kFrequentLetters + order] & 3];
    }
  }
  counted.lastOrder = order;
}

void VoMsgSequenceDetector::calculateState(VoMsgSequenceDetectorSession& counted) {
  if (counted.getState() == VoMsgDetectorSession::kDetecting && counted.totalSeqs >= kEnough &&
      getConfidence(&counted) >= kSureThing)
    counted.setState(VoMsgDetectorSession::kFound);
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
