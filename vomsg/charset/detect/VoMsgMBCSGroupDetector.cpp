#include "vomsg/charset/detect/VoMsgMBCSGroupDetector.h"

#include <memory>
#include <new>

#include "vomsg/charset/detect/VoMsgDistributionDetector.h"
#include "vomsg/charset/detect/VoMsgFrequenceTables.h"
#include "vomsg/charset/detect/VoMsgUTF8Detector.h"

namespace {

constexpr unsigned kUsualChunk = 4096;  // what the analysis reads at once

// Copies what matters of the `length` bytes at `data` to `reduced` and returns how many bytes that is.
unsigned reduce(const char* data, unsigned length, char* reduced) {
  unsigned kept = 0;
  bool isAfterHigh = true;  // the first run of a chunk keeps its first byte too
  for (unsigned i = 0; i < length; ++i) {
    const bool isHigh = (data[i] & 0x80) != 0;
    reduced[kept] = data[i];  // written in any case, kept where it counts: that leaves no branch to guess
    kept += isHigh || isAfterHigh;
    isAfterHigh = isHigh;
  }
  return kept;
}

template <class Table>
std::unique_ptr<VoMsgCharSetDetector> distribution(const SMModel& model) {
  auto table = std::make_unique<Table>();
  auto detector = std::make_unique<VoMsgDistributionDetector>(table.get(), VoMsgCodingStateMachine(&model));
  table.release();
  return detector;
}

}  // namespace

VoMsgMBCSGroupDetector::VoMsgMBCSGroupDetector() {
  addMember(std::make_unique<VoMsgUTF8Detector>());
  addMember(distribution<VoMsgBig5FrequenceTable>(Big5SMModel));
  addMember(distribution<VoMsgGB2312FrequenceTable>(GB18030SMModel));
  addMember(distribution<VoMsgEUCKRFrequenceTable>(EUCKRSMModel));
  addMember(distribution<VoMsgEUCJPFrequenceTable>(EUCJPSMModel));
  addMember(distribution<VoMsgEUCTWFrequenceTable>(EUCTWSMModel));
  addMember(distribution<VoMsgSJISFrequenceTable>(SJISSMModel));
}

VoMsgDetectorSession* VoMsgMBCSGroupDetector::handleData(const char* data, unsigned length,
                                                         VoMsgDetectorSession* session) {
  if (!session) return nullptr;
  char usual[kUsualChunk];
  std::unique_ptr<char[]> large;
  if (length > kUsualChunk) {
    large.reset(new (std::nothrow) char[length]);
    if (!large) return session;
  }
  char* const reduced = large ? large.get() : usual;
  return VoMsgGroupDetector::handleData(reduced, reduce(data, length, reduced), session);
}
