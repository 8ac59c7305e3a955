// Finds the line that ends a stretch of body: the next delimiter of a multipart in force, or the end of the data.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoMsgBoundaryTable.h"

class VoMsgBufferedReader;

namespace vomsg::detail {

struct BodyEnd {
  BoundaryMatch match;            // no type: the data ended
  std::uint64_t lineOffset = 0;   // where the delimiter line starts, or the end of the data
  std::uint64_t lineEnd = 0;      // behind the delimiter line and its line end
  unsigned terminator = 0;        // bytes of that line end
  unsigned terminatorBefore = 0;  // bytes of the line end before the delimiter line, which belongs to the delimiter
                                  // (RFC 2046, section 5.1.1); never reaches back beyond the start of the scan
};

// Scans from the reader's position, which is the start of a line, and leaves the reader behind what it found. With
// nothing in force the data is not walked at all.
BodyEnd findBodyEnd(VoMsgBufferedReader& reader, const BoundaryTable& boundaries);

// The first position in [from, end) where a line may start that begins with "--": both hyphens are there, or the
// first one is the last byte before `end`; the byte before is CR or LF. `from` has a byte before it. Returns `end`
// when there is none.
const char* findHyphenLine(const char* from, const char* end);

}  // namespace vomsg::detail
