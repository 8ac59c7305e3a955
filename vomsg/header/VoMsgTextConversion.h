// A converter from the factory for one text, as header values and names use it: "?" for what the target cannot say.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vomsg::detail {

enum class Conversion : std::uint8_t {
  done,
  missing,  // no converter handles the pair
  failed    // `out` holds what the converter left there
};

// Target first, as everywhere at the factory. Null names have no converter.
Conversion convertText(std::string& out, const char* toCharset, const char* fromCharset, std::string_view text);

}  // namespace vomsg::detail
