// Header text folded at 76 columns (RFC 5322, section 2.2.3; RFC 2047, section 2). A fold is CR LF TAB: our own
// unfolding drops the TAB, so what is written is read back as it was.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "vomsg/foundation/VoErrorCode.h"

class VoMsgBufferedWriter;

namespace vomsg::detail {

inline constexpr std::string_view kHeaderFold = "\r\n\t";

// Writes text and keeps the column. The first refused write ends it: later calls write nothing.
class HeaderLineWriter {
 public:
  explicit HeaderLineWriter(VoMsgBufferedWriter& writer, std::size_t column = 0) : mWriter(writer), mColumn(column) {}

  // As it stands.
  void write(std::string_view text);
  void fold();
  void endField();
  // Folded. No encoded word is split, line breaks become folds, and in an address list folds go behind commas where
  // they can. Text without a space to fold at may reach column 126 before it is cut.
  void writeFolded(std::string_view text, bool isAddressList);

  std::size_t column() const { return mColumn; }
  bool failed() const { return mFailed; }

 private:
  void writeLine(std::string_view text, bool isAddressList);
  void writePlain(std::string_view text, bool isAddressList);
  void writeBeforeWord(std::string_view text);

  VoMsgBufferedWriter& mWriter;
  std::size_t mColumn;
  bool mFailed = false;
};

// writeFolded() as one call; `column` is carried from call to call. kVoWriteFailed.
VoErrorCode WriteLine76(VoMsgBufferedWriter* writer, const char* text, unsigned length, unsigned& column,
                        bool isAddressList);

// An encoded word "=?charset?x?text?=".
struct EncodedWordSpan {
  std::size_t begin;  // npos: none
  std::size_t end;
  std::string_view charset;
  char encoding;
  std::string_view text;
};
// The first one at or after `from`.
EncodedWordSpan findEncodedWord(std::string_view text, std::size_t from);

// A parameter's value as it stands in a header: quoted when it holds a special, a blank or nothing.
std::string quoteParameterValue(std::string_view value);

}  // namespace vomsg::detail
