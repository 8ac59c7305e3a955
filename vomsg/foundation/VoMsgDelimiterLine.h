// The one place that knows what a delimiter line looks like before any boundary is compared.
#pragma once

#include <optional>
#include <string_view>

#include "vomsg/foundation/VoMsgAscii.h"

namespace vomsg::detail {

// What a line, given without its terminator, says behind its "--". Blanks and tabs at its end are left out,
// because gateways pad lines. Nothing when the line does not begin with "--".
constexpr std::optional<std::string_view> delimiterText(std::string_view line) noexcept {
  if (line.size() < 2 || line[0] != '-' || line[1] != '-') return std::nullopt;
  line.remove_prefix(2);
  while (!line.empty() && isBlank(line.back())) line.remove_suffix(1);
  return line;
}

// Cuts the "--" of a close delimiter off `text`; false when there is none.
constexpr bool cutCloseMark(std::string_view& text) noexcept {
  if (text.size() < 2 || text[text.size() - 1] != '-' || text[text.size() - 2] != '-') return false;
  text.remove_suffix(2);
  return true;
}

}  // namespace vomsg::detail
