// Why a header block that nobody edited is written anew all the same. Public for hosts that explain it to a person.
#pragma once

#include <cstdint>

// Why the parser wants a block written anew.
enum class VoMsgHeaderMark : std::uint8_t {
  none,
  droppedLine,          // a line without ":" after its name
  repeatedContentType,  // a second Content-Type replaced the first
  unquotedBoundary,     // a boundary without the quotes it needs
  blankTerminator,      // a line of blanks where the empty line belongs
  repeatedBoundary,     // of several boundary parameters the last one counts
  missingBoundary       // a multipart without boundary, read as text/plain
};

namespace vomsg::detail {
using HeaderMark = VoMsgHeaderMark;
}
