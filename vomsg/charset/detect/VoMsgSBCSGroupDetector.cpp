#include "vomsg/charset/detect/VoMsgSBCSGroupDetector.h"

#include <algorithm>
#include <array>

#include "vomsg/charset/detect/VoMsgSequenceCounter.h"
#include "vomsg/charset/detect/VoMsgSequenceDetector.h"
#include "vomsg/foundation/VoMsgGuard.h"

namespace {

using vomsg::detail::SequenceCounter;

constexpr std::array kModels = {
    &Koi8rModel,           &Win1251Model,          &Latin5Model,     &MacCyrillicModel,     &Ibm866Model,
    &Ibm855Model,          &Latin7Model,           &Win1253Model,    &Latin5BulgarianModel, &Win1251BulgarianModel,
    &Latin2HungarianModel, &Win1250HungarianModel, &TIS620ThaiModel,
};
static_assert(kModels.size() <= SequenceCounter::kMostModels);

// Some hundred kilobytes, worked out from the models when the first text comes that needs it: few do, and every process
// that loads the library would pay for it.
const SequenceCounter& counter() {
  static const SequenceCounter counter(kModels);
  return counter;
}

}  // namespace

VoMsgSBCSGroupDetector::VoMsgSBCSGroupDetector() {
  for (const SequenceModel* model : kModels) addMember(std::make_unique<VoMsgSequenceDetector>(model));
}

VoMsgSBCSGroupDetector::~VoMsgSBCSGroupDetector() = default;

// Each member learns what was counted for it; the empty chunk behind all that makes them decide.
VoMsgDetectorSession* VoMsgSBCSGroupDetector::handleData(const char* data, unsigned length,
                                                         VoMsgDetectorSession* session) {
  if (!session) return nullptr;
  return vomsg::detail::guardedOr<VoMsgDetectorSession*>(nullptr, [&] {
    const auto& sessions = static_cast<VoMsgGroupDetectorSession*>(session)->getSessions();
    for (unsigned done = 0, strip; done < length; done += strip) {
      strip = std::min(length - done, SequenceCounter::kMostBytes);
      std::array<vomsg::detail::SequenceCounts, kModels.size()> counts;
      counter().count(data + done, strip, counts);
      auto next = sessions.begin();  // one for each member, but for those whose session memory did not suffice for
      for (std::size_t m = 0; m < kModels.size() && next != sessions.end(); ++m) {
        const auto* const member = static_cast<const VoMsgSequenceDetector*>(getMembers()[m].get());
        if ((*next)->getDetector() == member) member->learn(data + done, strip, counts[m], (next++)->get());
      }
    }
    return VoMsgGroupDetector::handleData(data, 0, session);
  });
}
