#include "vomsg/charset/convert/VoMsgJisEscapes.h"

namespace vomsg::detail {

bool startsWithJisEscape(std::string_view text) noexcept {
  const std::string_view start = text.substr(0, kJisEscapeLength);
  return start == kJisToAscii || start == kJisToRoman || start == kJisToKanji1978 || start == kJisToKanji;
}

std::string dropRedundantJisEscapes(std::string_view text) {
  std::string kept;
  kept.reserve(text.size());
  // All sequences have one length and begin with ESC, so leaving one out can neither form nor hide another.
  for (std::size_t from = 0;;) {
    const std::size_t escape = text.find('\x1B', from);
    if (escape == text.npos) {
      kept.append(text.substr(from));
      return kept;
    }
    kept.append(text.substr(from, escape - from));
    const std::string_view rest = text.substr(escape);
    const bool redundant = startsWithJisEscape(rest) && startsWithJisEscape(rest.substr(kJisEscapeLength));
    if (!redundant) kept.push_back(text[escape]);
    from = escape + (redundant ? kJisEscapeLength : 1);
  }
}

}  // namespace vomsg::detail
