#include "cli/Marks.h"

#include "cli/EntityWalk.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"

namespace cli {

namespace {

const char* reasonOf(VoMsgHeaderMark mark) {
  switch (mark) {
    case VoMsgHeaderMark::none:
      return "none";
    case VoMsgHeaderMark::droppedLine:
      return "a line that is no header field";
    case VoMsgHeaderMark::repeatedContentType:
      return "a second Content-Type";
    case VoMsgHeaderMark::unquotedBoundary:
      return "a boundary without the quotes it needs";
    case VoMsgHeaderMark::blankTerminator:
      return "blanks in the line that ends the header";
    case VoMsgHeaderMark::repeatedBoundary:
      return "more than one boundary";
    case VoMsgHeaderMark::missingBoundary:
      return "a multipart without boundary";
  }
  return "unknown";
}

}  // namespace

std::vector<Mark> marksOf(VoMsgEntity* root) {
  std::vector<Mark> marks;
  EntityWalk walk(root);
  while (walk.next()) {
    const auto* mime = dynamic_cast<const VoMsgRfc822Entity*>(walk.entity());
    if (mime == nullptr) continue;
    const VoMsgEntityHeader* header = mime->getEntityHeader();
    if (header->getMark() != VoMsgHeaderMark::none)
      marks.push_back({reasonOf(header->getMark()), header->getMarkOffset()});
  }
  return marks;
}

}  // namespace cli
