// A single-byte charset of one language, recognised by how likely the letters follow each other when the text is read
// in it.
#pragma once

#include <memory>

#include "vomsg/charset/detect/VoMsgCharSetDetector.h"
#include "vomsg/charset/detect/tables/VoMsgSequenceModels.h"

namespace vomsg::detail {
class SequenceTables;
}

class VOMSG_API VoMsgSequenceDetectorSession : public VoMsgDetectorSession {
 public:
  explicit VoMsgSequenceDetectorSession(VoMsgCharSetDetector* detector);

 private:
  friend class VoMsgSequenceDetector;
  int totalSeqs = 0;  // pairs of frequent letters; all counters stop at 2^30 bytes
  int totalChar = 0;  // bytes of an order below 250
  int freqChar = 0;   // frequent letters
  unsigned char lastOrder = 255;
  int seqCounters[4] = {};  // the pairs by category
};

class VOMSG_API VoMsgSequenceDetector : public VoMsgCharSetDetector {
 public:
  static constexpr int kEnough = 1025;  // counted pairs, below which nothing is decided

  // `model` is borrowed for good. Throws std::bad_alloc.
  explicit VoMsgSequenceDetector(const SequenceModel* model);
  ~VoMsgSequenceDetector() override;

  // Never rules its charset out: an unlikely text stays undecided.
  VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) override;
  const char* getCharSetName(VoMsgDetectorSession* session) override;  // of the model
  VoMsgDetectorSession* createSession() override;
  // The share of likely pairs and of letters, against what is usual; 0.01 before any pair.
  float getConfidence(VoMsgDetectorSession* session) override;

  const SequenceModel* getModel() const { return model; }

 private:
  const SequenceModel* model;
  std::unique_ptr<const vomsg::detail::SequenceTables> mTables;
};
