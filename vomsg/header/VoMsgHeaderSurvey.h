// What the message parser must know of a header block while it runs: where the block ends, whether it is sound,
// and what its body is. No field object is made; the block's fields are built from the source when somebody
// asks for them.
#pragma once

#include <cstdint>
#include <string>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/header/VoMsgHeaderMark.h"
#include "vomsg/header/VoMsgStructuredValue.h"

class VoMsgBufferedReader;

namespace vomsg::detail {

class BoundaryTable;

// What ended a header block.
enum class HeaderEnd : std::uint8_t {
  emptyLine,     // the rule
  blankLine,     // a line of blanks, taken as the empty line
  boundaryLine,  // a delimiter of a multipart around it: no body
  endOfData      // no body
};

// Meant to be reused from block to block: the strings keep their storage. A value whose `has` flag is false is left
// over from an earlier block.
struct HeaderSurvey {
  VoErrorCode code = kVoSuccess;  // kVoMalformed: a limit was passed
  std::uint32_t offset = 0;
  std::uint32_t size = 0;                // the empty line included
  HeaderEnd end = HeaderEnd::endOfData;  // of no meaning when `code` is a failure
  HeaderMark mark = HeaderMark::none;    // the first one
  std::uint32_t markOffset = 0;          // the source offset of the line that caused it
  bool contentTypesDiffer = false;       // a replaced Content-Type said something else

  bool hasContentType = false;
  StructuredValue contentType;  // of the last Content-Type
  bool hasEncoding = false;
  StructuredValue encoding;  // of the first Content-Transfer-Encoding
  bool hasDisposition = false;
  StructuredValue disposition;  // of the first Content-Disposition

  // Storage for the survey's own use.
  StructuredValue spare;
  std::string scratch;
};

// Reads the block at the reader's position and leaves the reader behind it. `isChild` selects the limits of
// blocks below the top level; `boundaries` (may be null) are those in force.
void surveyHeaderBlock(HeaderSurvey& out, VoMsgBufferedReader& reader, bool isChild, const BoundaryTable* boundaries);

}  // namespace vomsg::detail
