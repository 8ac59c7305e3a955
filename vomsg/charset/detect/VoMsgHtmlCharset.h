// The charset that an HTML text names in a meta element.
#pragma once

#include <string>
#include <string_view>

namespace vomsg::detail {

// Only the first bytes of a document are searched; what they cut off is not found.
inline constexpr std::size_t kHtmlPrologue = 1024;

// The name in <meta charset=NAME> or <meta http-equiv=... content="...; charset=NAME"> within the first kHtmlPrologue
// bytes of `html`, outside comments; "" when there is none. A name of a 16-bit or 32-bit encoding is none: a text in
// which the element can be read byte by byte is not in one.
std::string htmlCharset(std::string_view html);

}  // namespace vomsg::detail
