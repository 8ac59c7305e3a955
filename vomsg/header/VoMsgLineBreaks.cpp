#include "vomsg/header/VoMsgLineBreaks.h"

#include "vomsg/foundation/VoMsgAscii.h"

namespace vomsg::detail {

namespace {

constexpr std::string_view kBreaks = "\r\n";
constexpr std::string_view kBreaksAndBlanks = "\r\n\t ";

bool isFold(std::string_view run) {
  return run.size() > 2 && run.substr(0, 2) == kBreaks && !hasLineBreak(run.substr(2));
}

// Copies `text` and hands each run, a line break and all breaks and blanks after it, to `replace`, which answers
// what stands for it between two texts.
template <class Replace>
std::string replaceRuns(std::string_view text, bool keepFirst, Replace&& replace) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t start = text.find_first_of(kBreaks, at);
    if (start == text.npos) return out.append(text.substr(at));
    out.append(text.substr(at, start - at));
    at = text.find_first_not_of(kBreaksAndBlanks, start);
    if (at == text.npos) return out;
    if (start > 0 || keepFirst) out.append(replace(text.substr(start, at - start)));
  }
  return out;
}

}  // namespace

bool hasLineBreak(std::string_view text) { return text.find_first_of(kBreaks) != text.npos; }

std::string joinLines(std::string_view text) {
  return replaceRuns(text, false, [](std::string_view) { return std::string_view(" "); });
}

std::string repairFolds(std::string_view text) {
  return replaceRuns(text, true, [](std::string_view run) { return isFold(run) ? run : std::string_view("\r\n\t"); });
}

}  // namespace vomsg::detail
