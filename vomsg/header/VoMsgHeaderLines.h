// The lines of a header block, for everyone who reads one: the survey of the message parser and the full parse
// walk the same lines and see the same ends.
//
// A physical line that the reader's buffer holds whole is looked at in place. Only a line that a refill cuts, and a
// logical line of several physical ones that somebody wants to read, is put together in a scratch string. Lengths
// are exact: a NUL hides nothing of a line's extent.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgBoundary.h"
#include "vomsg/header/VoMsgHeaderName.h"
#include "vomsg/header/VoMsgHeaderSurvey.h"

class VoMsgBufferedReader;

namespace vomsg::detail {

class BoundaryTable;

// Sets of names, a bit for each.
constexpr unsigned nameBit(HeaderName name) { return 1u << static_cast<unsigned>(name); }
inline constexpr unsigned kAllNames = ~0u;

class HeaderLines {
 public:
  // Reader and scratch are borrowed; the reader must not be used by others before finish(). `wanted` are the names
  // whose values matter: of other lines text() may hold only as much as tells them apart.
  HeaderLines(VoMsgBufferedReader& reader, std::string& scratch, unsigned wanted = kAllNames);
  ~HeaderLines() { finish(); }
  HeaderLines(const HeaderLines&) = delete;
  HeaderLines& operator=(const HeaderLines&) = delete;

  // Reads the next physical line and says what it is to the block. A delimiter of `boundaries` (may be null) is left
  // in the reader. Continuations of the line before must have been unfolded or skipped.
  VoMsgTerminatorType next(const BoundaryTable* boundaries);
  // Reads the next logical line, whatever it is to the block. False at the end of the data.
  bool nextLogical();
  // The line without its terminator; valid until next() or skipContinuations().
  std::string_view text() const { return mText; }
  // A continuation follows that is not part of text() yet.
  bool isContinued() const { return mIsContinued; }
  // Makes text() the logical line.
  void unfold();
  void skipContinuations();

  bool wants(HeaderName name) const { return (mWanted & nameBit(name)) != 0; }
  std::uint64_t lineOffset() const { return mLineOffset; }  // of the line that next() read
  std::uint64_t offset() const { return mWindowOffset + static_cast<std::uint64_t>(mpNext - mpWindow); }
  // Brings the reader to offset().
  void finish();

 private:
  bool readFirstLine();
  bool readPhysicalLine(std::string* spill);
  void readSplitLine(std::string* spill);
  bool isStillNeeded(std::string& text) const;
  bool refill();
  void leaveLine();
  void keepText();
  void peekContinuation();

  VoMsgBufferedReader& mReader;
  std::string& mScratch;
  const unsigned mWanted;
  const char* mpWindow = nullptr;  // the reader's buffered bytes, from its position on
  const char* mpNext = nullptr;
  const char* mpEnd = nullptr;
  std::uint64_t mWindowOffset = 0;
  std::uint64_t mLineOffset = 0;
  std::string_view mText;
  const char* mpLine = nullptr;  // the physical line when it lies whole in the window, else null
  std::size_t mLineLength = 0;
  unsigned mTerminatorLength = 0;
  bool mIsContinued = false;
};

// A logical line, or the beginning of one, taken apart.
struct HeaderLine {
  enum class Kind : std::uint8_t {
    field,    // name and value hold
    ignored,  // no blank and no ":" at all
    dropped,  // no ":" after the name
    open      // only the continuation will tell
  };
  Kind kind;
  std::string_view name;
  std::string_view value;  // ends at the first NUL, where it ends for everyone who asks the field for it
};

// `more`: the line goes on with a continuation that `text` does not hold. A NUL ends the line's meaning.
HeaderLine cutHeaderLine(std::string_view text, bool more);

// Reads a block and hands its fields to `sink`:
//   VoErrorCode add(HeaderName, std::string_view name, std::string_view value, std::uint64_t offset)
//                                                 of an unwanted name the value is empty, and the name may be cut
//   void mark(HeaderMark, std::uint64_t offset)
// A failing add() ends the block behind its line.
template <class Sink>
VoErrorCode walkHeaderBlock(HeaderLines& lines, const BoundaryTable* boundaries, Sink& sink, HeaderEnd& end) {
  for (;;) {
    switch (lines.next(boundaries)) {
      case kVoTerminatorText:
        break;
      case kVoTerminatorEmpty:
        end = HeaderEnd::emptyLine;
        return kVoSuccess;
      case kVoTerminatorBlank:
        sink.mark(HeaderMark::blankTerminator, lines.lineOffset());
        end = HeaderEnd::blankLine;
        return kVoSuccess;
      case kVoTerminatorBoundary:
        end = HeaderEnd::boundaryLine;
        return kVoSuccess;
      case kVoTerminatorEnd:
        end = HeaderEnd::endOfData;
        return kVoSuccess;
    }
    HeaderLine line = cutHeaderLine(lines.text(), lines.isContinued());
    if (line.kind == HeaderLine::Kind::open) {
      lines.unfold();
      line = cutHeaderLine(lines.text(), false);
    }
    if (line.kind == HeaderLine::Kind::field) {
      const HeaderName name = headerNameOf(line.name);
      if (!lines.wants(name)) {
        line.value = {};
      } else if (lines.isContinued()) {
        lines.unfold();
        line = cutHeaderLine(lines.text(), false);
      }
      const VoErrorCode code = sink.add(name, line.name, line.value, lines.lineOffset());
      lines.skipContinuations();
      if (voFailed(code)) return code;
    } else {
      if (line.kind == HeaderLine::Kind::dropped) sink.mark(HeaderMark::droppedLine, lines.lineOffset());
      lines.skipContinuations();
    }
  }
}

}  // namespace vomsg::detail
