// The Q encoding of encoded words (RFC 2047, section 4.2), over views.
#pragma once

#include <string>
#include <string_view>

namespace vomsg::detail {

// Both append to `out`.
void decodeQ(std::string_view text, std::string& out);
void encodeQ(std::string_view text, std::string& out);

}  // namespace vomsg::detail
