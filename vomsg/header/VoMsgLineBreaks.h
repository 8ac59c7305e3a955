// Line breaks in what callers hand in. A CR or LF that reached the output as it is would begin a header field of
// the value's choosing, or end the header; so names with one are refused and values lose theirs.
#pragma once

#include <string>
#include <string_view>

namespace vomsg::detail {

bool hasLineBreak(std::string_view text);

// One logical line: each run of line breaks, with the blanks after it, becomes one space; at either end it goes.
std::string joinLines(std::string_view text);

// Folds that stay folds: CR LF and blanks before further text are kept as they are, every other run of line
// breaks (with the blanks after it) becomes the fold CR LF TAB; at the end it goes, since a line of nothing but
// blanks passes for the empty line that ends a header.
std::string repairFolds(std::string_view text);

}  // namespace vomsg::detail
