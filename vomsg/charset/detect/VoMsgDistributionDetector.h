// A two-byte East Asian encoding, recognised by how frequent its characters are: read in the right encoding, most
// characters of a text are among the 512 most frequent of the language.
#pragma once

#include <memory>

#include "vomsg/charset/detect/VoMsgCharSetDetector.h"
#include "vomsg/charset/detect/VoMsgCodingStateMachine.h"

class VoMsgFrequenceTable;

namespace vomsg::detail {
class MachineSteps;
}

class VOMSG_API VoMsgDistributionDetectorSession : public VoMsgDetectorSession {
 public:
  VoMsgDistributionDetectorSession(VoMsgCharSetDetector* detector, const VoMsgCodingStateMachine& start);

 private:
  friend class VoMsgDistributionDetector;
  VoMsgCodingStateMachine machine;
  int totalChars = 0;  // counted so far; both stop at 2^30
  int freqChars = 0;
  char lastChar = 0;  // the last byte of the chunk before: a character may be cut between chunks
};

class VOMSG_API VoMsgDistributionDetector : public VoMsgCharSetDetector {
 public:
  static constexpr int kEnough = 1025;  // counted characters, below which nothing is decided

  // Takes `table` over. Throws std::bad_alloc, and leaves the table with the caller then.
  VoMsgDistributionDetector(VoMsgFrequenceTable* table, const VoMsgCodingStateMachine& machine);
  ~VoMsgDistributionDetector() override;

  VoMsgDetectorSession* handleData(const char* data, unsigned length, VoMsgDetectorSession* session) override;
  const char* getCharSetName(VoMsgDetectorSession* session) override;  // of the machine's model
  VoMsgDetectorSession* createSession() override;
  // 0.99 when frequent characters reach their typical ratio to rare ones, else 0.01; 0 before any was counted.
  float getConfidence(VoMsgDetectorSession* session) override;

 private:
  void calculateState(VoMsgDistributionDetectorSession& counted);

  VoMsgCodingStateMachine machineTemplate;
  std::unique_ptr<const vomsg::detail::MachineSteps> mSteps;  // the machine again, made for long runs
  std::unique_ptr<VoMsgFrequenceTable> table;
};
