#include "cli/Json.h"

#include <cstdio>
#include <string_view>

#include "cli/Printable.h"

namespace cli {

namespace {

void appendEscape(std::string& out, unsigned unit) {
  char escape[8];
  std::snprintf(escape, sizeof escape, "\\u%04x", unit & 0xFFFFu);
  out += escape;
}

}  // namespace

std::string jsonLine(const Json& value) {
  const std::string line = value.dump(-1, ' ', false, Json::error_handler_t::replace);
  // Outside strings JSON is plain ASCII, so everything that is unsafe stands inside one.
  std::string out;
  out.reserve(line.size());
  for (std::string_view rest = line; !rest.empty();) {
    const Character character = firstCharacter(rest);
    const auto code = static_cast<unsigned>(character.code);
    if (!isUnsafe(character.code)) {
      out.append(rest, 0, character.length);
    } else if (code < 0x10000) {
      appendEscape(out, code);
    } else {
      appendEscape(out, 0xD800 + ((code - 0x10000) >> 10));
      appendEscape(out, 0xDC00 + (code & 0x3FF));
    }
    rest.remove_prefix(character.length);
  }
  return out;
}

Json jsonText(const char* text) { return text != nullptr ? Json(text) : Json(nullptr); }

}  // namespace cli
