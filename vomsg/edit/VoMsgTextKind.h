// How a disclaimer is put into one kind of text. The functions work on text whose ASCII characters are bytes below
// 0x80 that mean nothing else: single-byte charsets and UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace vomsg::detail {

struct TextKind {
  // The disclaimer as it stands in such a text; in and out are UTF-8.
  std::string (*dress)(std::string_view disclaimer);
  // Puts `dressed` into `text`, at its top or bottom. False when the text has no place for it.
  bool (*insert)(std::string_view text, std::string_view dressed, bool atTop, bool isUtf8, std::string& out);
};

extern const TextKind kPlainText;
extern const TextKind kHtmlText;
extern const TextKind kCalendarText;

// The disclaimer without the line end of its last line.
std::string_view withoutLastLineEnd(std::string_view text);
// Where text begins, behind a byte order mark.
std::size_t startOfText(std::string_view text, bool isUtf8);

}  // namespace vomsg::detail
