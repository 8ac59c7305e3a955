// What a line of a body means to the multiparts that are open around it (RFC 2046, section 5.1.1).
#pragma once

#include <vector>

#include "vomsg/foundation/VoMsgExport.h"

enum VoMsgBoundaryType : int {
  kVoBoundaryNone = 0,   // not a boundary line
  kVoBoundaryDelimiter,  // "--" and the boundary
  kVoBoundaryClose       // "--", the boundary and "--"
};

enum VoMsgTerminatorType : int {
  kVoTerminatorText = 0,  // an ordinary line
  kVoTerminatorEmpty,     // nothing but line-end characters
  kVoTerminatorBoundary,  // a delimiter or close-delimiter of a boundary in force
  kVoTerminatorEnd,       // no line: the end of the input
  kVoTerminatorBlank      // blanks and tabs only
};

// The boundaries in force, innermost first; the strings are borrowed.
using VoMsgBoundaryList = std::vector<const char*>;

// `terminatorLength` is the length of the line's own line end: 0, 1 or 2. Boundaries are compared byte for
// byte; blanks and tabs after a delimiter do not hide it.
VOMSG_API VoMsgBoundaryType voGetBoundaryType(const char* line, unsigned terminatorLength, const char* boundary);
VOMSG_API VoMsgTerminatorType voGetTerminatorType(const char* line, unsigned terminatorLength,
                                                  const VoMsgBoundaryList* list);
