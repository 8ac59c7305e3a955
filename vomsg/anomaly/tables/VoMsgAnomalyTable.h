// The anomalies: number, name, level, what is odd, and which reading the library takes. In rising order of the numbers.
#pragma once

#include <span>

#include "vomsg/anomaly/VoMsgAnomaly.h"

namespace vomsg::detail {

struct AnomalyRow {
  VoMsgAnomalyCode code;
  const char* name;
  VoMsgAnomalyLevel level;
  const char* text;
  const char* reading;
};

std::span<const AnomalyRow> anomalyTable();

}  // namespace vomsg::detail
