// The header fields that mean something to the parser itself; to it all others are alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "vomsg/foundation/VoMsgAscii.h"

namespace vomsg::detail {

// The address headers come first, in the order of the entity header's lists.
enum class HeaderName : std::uint8_t { from, to, cc, bcc, contentType, contentEncoding, contentDisposition, other };

inline constexpr std::size_t kAddressNames = 4;

constexpr bool isAddressName(HeaderName name) noexcept { return name <= HeaderName::bcc; }
constexpr bool isStructuredName(HeaderName name) noexcept { return !isAddressName(name) && name != HeaderName::other; }

// By length first: for most fields of a mail that is the only test.
constexpr HeaderName headerNameOf(std::string_view text) noexcept {
  const auto pick = [text](std::string_view wanted, HeaderName name) {
    return equalNoCase(text, wanted) ? name : HeaderName::other;
  };
  switch (text.size()) {
    case 2:
      return toLower(text[0]) == 't' ? pick("to", HeaderName::to) : pick("cc", HeaderName::cc);
    case 3:
      return pick("bcc", HeaderName::bcc);
    case 4:
      return pick("from", HeaderName::from);
    case 12:
      return pick("content-type", HeaderName::contentType);
    case 19:
      return pick("content-disposition", HeaderName::contentDisposition);
    case 25:
      return pick("content-transfer-encoding", HeaderName::contentEncoding);
    default:
      return HeaderName::other;
  }
}

// What a caller may name a new field: printable ASCII without blank and ":" (RFC 5322, section 3.6.8).
constexpr bool isFieldName(std::string_view name) noexcept {
  for (const char c : name)
    if (c <= ' ' || c == ':' || c == 0x7F) return false;  // signed or not: no byte above 0x7F passes
  return !name.empty() && isAscii(name);
}

// What a caller may name a new parameter (RFC 2045, section 5.1).
constexpr bool isToken(std::string_view name) noexcept {
  return isFieldName(name) && name.find_first_of("()<>@,;:\\\"/[]?=") == name.npos;
}

}  // namespace vomsg::detail
