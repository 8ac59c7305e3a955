#include "vomsg/foundation/VoMsgBoundary.h"

#include <algorithm>
#include <string_view>

#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgDelimiterLine.h"

using namespace vomsg::detail;

VoMsgBoundaryType voGetBoundaryType(const char* line, unsigned terminatorLength, const char* boundary) {
  const std::string_view wanted = viewOf(boundary);
  std::string_view whole = viewOf(line);
  whole.remove_suffix(std::min<std::size_t>(terminatorLength, whole.size()));
  auto text = delimiterText(whole);
  if (!text) return kVoBoundaryNone;
  if (*text == wanted) return kVoBoundaryDelimiter;
  return cutCloseMark(*text) && *text == wanted ? kVoBoundaryClose : kVoBoundaryNone;
}

VoMsgTerminatorType voGetTerminatorType(const char* line, unsigned terminatorLength, const VoMsgBoundaryList* list) {
  if (!line) return kVoTerminatorEnd;
  std::string_view text = line;
  if (text.size() < terminatorLength) return kVoTerminatorText;
  text.remove_suffix(terminatorLength);

  if (std::all_of(text.begin(), text.end(), isLineEnd)) return kVoTerminatorEmpty;
  // A line end before other text counts as blank as well: only what stands before the first one is looked at.
  const auto firstText = std::find_if_not(text.begin(), text.end(), isBlank);
  if (firstText == text.end() || isLineEnd(*firstText)) return kVoTerminatorBlank;

  if (!list) return kVoTerminatorText;
  const bool ends = std::any_of(list->begin(), list->end(), [&](const char* boundary) {
    return voGetBoundaryType(line, terminatorLength, boundary) != kVoBoundaryNone;
  });
  return ends ? kVoTerminatorBoundary : kVoTerminatorText;
}
