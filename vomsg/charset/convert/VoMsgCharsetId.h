// A charset's name, looked up once: what it is called and where it stands in the table.
#pragma once

#include <cstddef>

namespace vomsg::detail {

struct CharsetId {
  static constexpr int kUnknown = -1;

  const char* name = nullptr;  // the canonical name, or what was asked for when the table does not know it
  int record = kUnknown;       // in gCharsetTable
};

// `name` may be null.
CharsetId charsetId(const char* name) noexcept;

}  // namespace vomsg::detail
