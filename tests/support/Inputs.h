// What tests feed to parsers and codecs.
#pragma once

#include <random>
#include <string>
#include <string_view>

namespace vomsg::test {

inline std::string randomBytes(std::mt19937& random, std::size_t size) {
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

// Calls `each` with every string of up to `longest` of `bytes`.
template <class Each>
void forEveryString(std::string_view bytes, std::size_t longest, Each each) {
  for (std::size_t size = 0, count = 1; size <= longest; ++size, count *= bytes.size()) {
    for (std::size_t number = 0; number < count; ++number) {
      std::string text;
      for (std::size_t i = 0, rest = number; i < size; ++i, rest /= bytes.size()) text += bytes[rest % bytes.size()];
      each(text);
    }
  }
}

}  // namespace vomsg::test
