// What `vomsg check --explain` tells about an anomaly beyond the library's sentence.
#pragma once

#include <string>

#include "vomsg/anomaly/VoMsgAnomaly.h"

namespace cli {

struct AnomalyAdvice {
  VoMsgAnomalyCode code;
  const char* example;  // the smallest one, with line ends as \n
  const char* others;   // how other readers take it
  const char* advice;   // what a gateway should do
};

// Null for a number that is no code.
const AnomalyAdvice* adviceOn(VoMsgAnomalyCode code);
// "note", "ambiguous" or "dangerous".
const char* nameOf(VoMsgAnomalyLevel level);
// The code that `text`, a number or a name, means; 0 when it means none.
int anomalyCodeOf(const std::string& text);
// All that is known about a code, as a section of docs/anomalies.md.
std::string explain(VoMsgAnomalyCode code);

}  // namespace cli
