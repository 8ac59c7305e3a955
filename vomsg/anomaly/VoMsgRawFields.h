// A header block as its bytes stand: fields with their folds, and the parameters of one value with their quotes. The
// header model keeps what a value means; what is odd about its form is gone there.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vomsg::detail {

// A line with its line end, which may be CR LF, LF, a lone CR or, at the end, nothing.
struct RawLine {
  std::string_view text;  // without the line end
  std::size_t offset;
  std::size_t length;  // with the line end
};
// Cuts the line at `offset` off `text`, which has more bytes there.
RawLine rawLineAt(std::string_view text, std::size_t offset);

struct RawField {
  std::string_view name;   // without blanks before the colon
  std::string_view value;  // behind the colon, with folds, without the last line end
  std::size_t offset = 0;  // of the field in the block
  std::size_t valueOffset = 0;
  bool hasBlankInName = false;

  std::size_t length() const { return valueOffset - offset + value.size(); }
};

struct RawParameter {
  std::string_view name;
  std::string text;  // without quotes and backslashes
  std::size_t offset = 0;
  std::size_t length = 0;  // of the value, with its quotes
  bool isQuoted = false;
  bool isFolded = false;  // a line end stands inside the quotes
};

// The parameters of a Content-Type or Content-Disposition value, in order. An unquoted value reaches up to the
// semicolon. `hasComment`: a comment stands outside of quotes behind the first semicolon.
std::vector<RawParameter> rawParameters(std::string_view value, bool& hasComment);
// What stands before the first semicolon, without blanks and comments, in lower case.
std::string rawMainValue(std::string_view value);
// The value without folds, blanks at its ends, and upper case: what two fields that say the same have in common.
std::string normalised(std::string_view value);

}  // namespace vomsg::detail
