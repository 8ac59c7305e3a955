// Strings that the interface hands out for free(): made by malloc, owned by the caller.
#pragma once

#include <cstdlib>
#include <memory>
#include <string_view>

namespace vomsg::detail {

struct FreeDeleter {
  void operator()(void* block) const noexcept { std::free(block); }
};
using CString = std::unique_ptr<char, FreeDeleter>;

// A NUL-terminated malloc'd copy of `text`; null when memory runs out.
CString copyCString(std::string_view text) noexcept;
// A copy of a C string; null for null.
CString copyCStringOrNull(const char* text) noexcept;

}  // namespace vomsg::detail
