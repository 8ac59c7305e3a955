#include "vomsg/anomaly/VoMsgAnomaly.h"

#include <algorithm>

#include "vomsg/anomaly/tables/VoMsgAnomalyTable.h"

namespace {

bool gCollect = false;

const vomsg::detail::AnomalyRow* rowOf(VoMsgAnomalyCode code) {
  const auto table = vomsg::detail::anomalyTable();
  const auto row =
      std::lower_bound(table.begin(), table.end(), code,
                       [](const auto& candidate, VoMsgAnomalyCode wanted) { return candidate.code < wanted; });
  return row != table.end() && row->code == code ? &*row : nullptr;
}

}  // namespace

const char* voAnomalyText(VoMsgAnomalyCode code) {
  const auto* const row = rowOf(code);
  return row ? row->text : nullptr;
}

const char* voAnomalyName(VoMsgAnomalyCode code) {
  const auto* const row = rowOf(code);
  return row ? row->name : nullptr;
}

const char* voAnomalyReading(VoMsgAnomalyCode code) {
  const auto* const row = rowOf(code);
  return row ? row->reading : nullptr;
}

VoMsgAnomalyLevel voAnomalyLevel(VoMsgAnomalyCode code) {
  const auto* const row = rowOf(code);
  return row ? row->level : kVoAnomalyNote;
}

unsigned voCountAnomalyCodes() { return static_cast<unsigned>(vomsg::detail::anomalyTable().size()); }
VoMsgAnomalyCode voAnomalyCodeAt(unsigned i) { return vomsg::detail::anomalyTable()[i].code; }

void VoMsgSetCollectAnomalies(bool collect) { gCollect = collect; }
bool VoMsgGetCollectAnomalies() { return gCollect; }
