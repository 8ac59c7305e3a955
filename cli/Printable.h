// Text from mail on its way to a terminal.
#pragma once

#include <string>
#include <string_view>

#include "vomsg/mail/Utf8.h"

namespace cli {

// `text` as UTF-8 in which nothing steers a terminal or reorders a line: control characters, directional marks and
// bytes that are no UTF-8 come out as \xNN or \u{NNNN}, a backslash as two.
std::string printable(std::string_view text);
// The same for a text of several lines: line ends, tabs and backslashes stay, and so do the marks that scripts need to
// be read rightly (joiners, left-to-right and right-to-left marks). CR LF becomes LF.
std::string printableLines(std::string_view text);

using vomsg::Character;
using vomsg::firstCharacter;
using vomsg::isUnsafe;
using vomsg::kNotUtf8;

}  // namespace cli
