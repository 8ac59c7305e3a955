// Passes encoded lines on with the line ends of the text that they go into.
#pragma once

#include <string>
#include <string_view>

#include "vomsg/foundation/VoMsgBufferedWriter.h"

namespace vomsg::detail {

class LineEndFilter : public VoMsgBufferedWriter {
 public:
  // Every CR LF becomes `lineEnd`, one of CR LF, LF and CR. Without `lastLineEnd` the last line gets none.
  LineEndFilter(VoMsgBufferedWriter& target, std::string_view lineEnd, bool lastLineEnd);
  bool open() override { return true; }
  bool close() override { return flush(); }
  bool isOpen() override { return true; }
  bool writeBuffer() override;
  // Ends the text; nothing may be written after it. False when the target refuses.
  bool finish();

 private:
  VoMsgBufferedWriter& mTarget;
  std::string_view mLineEnd;
  bool mLastLineEnd;
  bool mHeld = false;  // a line end has come in, and nothing behind it yet
};

}  // namespace vomsg::detail
