// The texts of a stream: UTF-16LE or in its code page inside, UTF-8 outside.
#pragma once

#include <string>
#include <string_view>

namespace vomsg::detail {

// Converts up to the first NUL unit or the end; an odd last byte is ignored. The result is valid UTF-8: half a
// surrogate pair becomes U+FFFD.
std::string utf8FromUtf16(std::string_view bytes);
// The reverse, without a NUL; malformed UTF-8 becomes U+FFFD.
std::string utf16FromUtf8(std::string_view text);
// `text` in another charset, "?" for what that cannot say; empty when it cannot be converted.
std::string convertedText(const char* text, const char* from, const char* to);

}  // namespace vomsg::detail
