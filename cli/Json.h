// JSON that any terminal and any log viewer can take.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace cli {

using Json = nlohmann::ordered_json;

// The value on one line. What steers a terminal, reorders a line or is not to be seen comes out as \uNNNN, so that the
// document means the same but shows what it holds; bytes that are no UTF-8 become U+FFFD.
std::string jsonLine(const Json& value);
// A C string, or null.
Json jsonText(const char* text);

}  // namespace cli
