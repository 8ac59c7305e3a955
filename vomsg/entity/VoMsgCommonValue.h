// The media types and transfer encodings that nearly all mail is made of, as numbers of one byte. The parser sees them
// anyway; with them kept, what an entity is can be told without building its header block. A value counts as common
// only when it is written as here, letter by letter, for it is handed out as it was written.
#pragma once

#include <cstdint>
#include <string_view>

namespace vomsg::detail {

enum class CommonValue : std::uint8_t {
  unknown,  // ask the header block
  none      // no field declares any; the rows of the table follow
};

// The number of `value`: `unknown` when it is not among the common ones.
CommonValue commonValueOf(std::string_view value) noexcept;
// The value of a number; null for `none`. Not to be asked about `unknown`.
const char* textOf(CommonValue value) noexcept;

}  // namespace vomsg::detail
