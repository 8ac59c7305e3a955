// A single-byte charset of one language, recognised by how likely the letters follow each other when the text is read
// in it.
#pragma once

#include "vomsg/charset/detect/VoMsgCharSetDetector.h"
#include "vomsg/charset/detect/tables/VoMsgSequenceModels.h"

namespace vomsg::detail {
struct SequenceCounts;
}

class VOMSG_API VoMsgSequenceDetectorSession : public VoMsgDetectorSession {
 public:
  explicit VoMsgSequenceDetectorSession(VoMsgCharSetDetector* detector);

 private:
  friend class VoMsgSequenceDetector;
  int totalSeqs = 0;  // pairs of frequent letters; no counter goes far beyond 2^30
  int totalChar = 0;  // bytes of an order below 250
  int freqChar = 0;   // frequent letters
  unsigned char lastOrder = 255;
  int seqCounters[4] = {};  // the pairs by category
};

class VOMSG_API VoMsgSequenceDetector : public VoMsgCharSetDetector {
 public:
  static constexpr int kEnough = 1025;  // counted pairs, below which nothing is decided

  explicit VoMsgSequenceDetector(const SequenceModel* model);  // borrowed for good

  // Never rules its charset out: an unlikely text stays undecided.
  VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) override;
  const char* getCharSetName(VoMsgDetectorSession* session) override;  // of the model
  VoMsgDetectorSession* createSession() override;
  // The share of likely pairs and of letters, against what is usual; 0.01 before any pair.
  float getConfidence(VoMsgDetectorSession* session) override;

  // For a group that counts for all its members at once: puts what the `length` bytes at `data`, at least one, say into
  // `session` without deciding anything. `rest` is what was counted of all bytes but the first.
  void learn(const char* data, unsigned length, const vomsg::detail::SequenceCounts& rest,
             VoMsgDetectorSession* session) const;

 private:
  void learnByte(unsigned char byte, VoMsgSequenceDetectorSession& counted) const;
  void calculateState(VoMsgSequenceDetectorSession& counted);

  const SequenceModel* model;
};
