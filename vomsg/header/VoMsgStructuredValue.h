// The value of Content-Type, Content-Transfer-Encoding or Content-Disposition, cut into main value and parameters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vomsg::detail {

struct StructuredParameter {
  std::string name;
  std::string value;
  bool isEncoded = false;
};

// Meant to be reused: strings keep their storage, so `count` says how many parameters are meant.
struct StructuredValue {
  std::string value;
  std::vector<StructuredParameter> parameters;
  std::size_t count = 0;
  bool needsQuoting = false;  // a boundary stands without the quotes it needs

  // The first parameter of that name (case does not count), or null.
  const StructuredParameter* find(std::string_view name) const;
};

// `text` is NUL-terminated. At most `maxParameters` parameters are read when it is above 0.
void parseStructuredValue(StructuredValue& out, const char* text, int maxParameters);

}  // namespace vomsg::detail
