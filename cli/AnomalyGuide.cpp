#include "cli/AnomalyGuide.h"

#include <array>

namespace cli {

const char* nameOf(VoMsgAnomalyLevel level) {
  static constexpr std::array<const char*, 3> kNames = {"note", "ambiguous", "dangerous"};
  return kNames.at(static_cast<std::size_t>(level));
}

int anomalyCodeOf(const std::string& text) {
  for (unsigned i = 0; i < voCountAnomalyCodes(); ++i) {
    const VoMsgAnomalyCode code = voAnomalyCodeAt(i);
    if (text == voAnomalyName(code) || text == std::to_string(code)) return code;
  }
  return 0;
}

std::string explain(VoMsgAnomalyCode code) {
  std::string text =
      "## " + std::to_string(code) + " " + voAnomalyName(code) + " (" + nameOf(voAnomalyLevel(code)) + ")\n\n";
  text.append(voAnomalyText(code)).append("\n");
  const AnomalyAdvice* const advice = adviceOn(code);
  if (!advice) return text;
  text.append("\n- Example: `").append(advice->example).append("`\n");
  text.append("- This library: ").append(voAnomalyReading(code)).append("\n");
  text.append("- Others: ").append(advice->others).append("\n");
  text.append("- A gateway: ").append(advice->advice).append("\n");
  return text;
}

}  // namespace cli
