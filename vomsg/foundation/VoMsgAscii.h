// Case-insensitive comparison that knows ASCII only, whatever the host's locale; and classes of characters.
#pragma once

#include <cstddef>
#include <string_view>

namespace vomsg::detail {

constexpr char toLower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

constexpr bool equalNoCase(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (toLower(a[i]) != toLower(b[i])) return false;
  return true;
}

constexpr bool startsWithNoCase(std::string_view text, std::string_view prefix) noexcept {
  return text.size() >= prefix.size() && equalNoCase(text.substr(0, prefix.size()), prefix);
}

constexpr bool endsWithNoCase(std::string_view text, std::string_view suffix) noexcept {
  return text.size() >= suffix.size() && equalNoCase(text.substr(text.size() - suffix.size()), suffix);
}

constexpr bool isBlank(char c) noexcept { return c == ' ' || c == '\t'; }
constexpr bool isLineEnd(char c) noexcept { return c == '\r' || c == '\n'; }

constexpr bool isAscii(std::string_view text) noexcept {
  for (const char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

// A string_view of a C string that may be null.
constexpr std::string_view viewOf(const char* text) noexcept {
  return text ? std::string_view(text) : std::string_view();
}

}  // namespace vomsg::detail
