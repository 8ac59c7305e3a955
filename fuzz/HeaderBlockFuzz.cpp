// A header block: the survey and the full parse agree; written anew it is one block without a mark, and writing it
// again and again settles. (Not at once: blanks behind an encoded word go, and that brings the next comma closer.)
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "vomsg/foundation/VoMsgBoundaryTable.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"
#include "vomsg/header/VoMsgEntityHeader.h"
#include "vomsg/header/VoMsgHeaderSurvey.h"

using vomsg::detail::HeaderMark;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

VoErrorCode parse(VoMsgEntityHeader& header, const std::string& text, unsigned& after) {
  VoMsgBoundaryList boundaries = {"b"};
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(text.data())),
                           static_cast<unsigned>(text.size()));
  reader.open();
  const VoErrorCode code = header.parseHeaderPart(&reader, "us-ascii", &boundaries);
  after = reader.getOffset();
  return code;
}

std::string written(VoMsgEntityHeader& header) {
  VoMsgMemoryWriter writer;
  require(header.writeNewHeaderPart(&writer) == kVoSuccess && writer.flush());
  return {writer.getData(), writer.getLength()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  VoMsgEntityHeader header;
  unsigned after = 0;
  const VoErrorCode code = parse(header, text, after);
  require(after == header.getHeaderSize());

  vomsg::detail::HeaderSurvey survey;
  vomsg::detail::BoundaryTable table;
  table.push("b");
  VoMsgMemoryReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(text.data())),
                           static_cast<unsigned>(text.size()));
  reader.open();
  vomsg::detail::surveyHeaderBlock(survey, reader, false, &table);
  require(survey.code == code && survey.size == after && reader.getOffset() == after);
  require(survey.mark == header.getMark() && survey.contentTypesDiffer == header.contentTypesDiffer());

  header.setEdited();
  std::string before, anew = written(header);
  for (int round = 0; round < 8 && anew != before; ++round) {
    VoMsgEntityHeader again;
    if (voFailed(parse(again, anew, after)) || voFailed(code)) return 0;
    require(after == anew.size());
    // A "?" in a boundary asks for quotes when it is read and gets none when it is written.
    const bool asksForQuotes = again.getMark() == HeaderMark::unquotedBoundary && anew.find('?') != anew.npos;
    require(again.getMark() == HeaderMark::none || asksForQuotes);
    require(again.countHeaders() <= header.countHeaders());
    before = std::exchange(anew, written(again));
  }
  require(anew == before);
  return 0;
}
