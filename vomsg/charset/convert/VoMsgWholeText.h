// Converting whole texts, where the converters of the factory handle strings: NULs are kept, and texts in the wide
// Unicode encodings, which the factory does not serve, can be read.
#pragma once

#include <string>
#include <string_view>

namespace vomsg::detail {

// Converts `text` into `out`. A character that `to` lacks becomes "?" when `substitute` is set, else it is a failure.
// False: no such conversion, or a loss; `out` then says nothing. UTF-16 and UTF-32 are read, never written: mail text
// is lines of octets (RFC 2046, section 4.1.2).
bool convertWholeText(const char* to, const char* from, bool substitute, std::string_view text, std::string& out);

// Reads UTF-16 or UTF-32 as `charset` names it; a byte order mark decides over the name and is dropped, and big-endian
// is assumed where neither says (RFC 2781, section 4.3). What is no character becomes U+FFFD. False: not such a name.
bool decodeWideText(const char* charset, std::string_view text, std::string& utf8);

// Whether all of `text` is UTF-8: shortest forms only, no surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view text);

}  // namespace vomsg::detail
