#include "vomsg/charset/detect/VoMsgHtmlCharset.h"

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/foundation/VoMsgAscii.h"

namespace vomsg::detail {

namespace {

bool isSpace(char c) { return isBlank(c) || isLineEnd(c) || c == '\f'; }

bool isNameChar(char c) {
  return (c >= '0' && c <= '9') || (toLower(c) >= 'a' && toLower(c) <= 'z') || c == '-' || c == '_' || c == '.' ||
         c == ':' || c == '+';
}

void skipSpace(std::string_view& rest) {
  while (!rest.empty() && isSpace(rest.front())) rest.remove_prefix(1);
}

// The name after the first "charset =" in the inside of a tag; either as an attribute or in the value of one.
std::string_view charsetIn(std::string_view tag) {
  constexpr std::string_view kName = "charset";
  for (; !tag.empty(); tag.remove_prefix(1)) {
    if (!startsWithNoCase(tag, kName)) continue;
    std::string_view rest = tag.substr(kName.size());
    skipSpace(rest);
    if (rest.empty() || rest.front() != '=') continue;
    rest.remove_prefix(1);
    skipSpace(rest);
    if (!rest.empty() && (rest.front() == '"' || rest.front() == '\'')) rest.remove_prefix(1);
    std::size_t length = 0;
    while (length < rest.size() && isNameChar(rest[length])) ++length;
    if (length > 0) return rest.substr(0, length);
  }
  return {};
}

}  // namespace

std::string htmlCharset(std::string_view html) {
  constexpr std::string_view kMeta = "<meta";
  std::string_view rest = html.substr(0, kHtmlPrologue);
  while (true) {
    const std::size_t open = rest.find('<');
    if (open == rest.npos) return {};
    rest.remove_prefix(open);
    if (rest.starts_with("<!--")) {
      const std::size_t close = rest.find("-->", 2);  // "<!-->" is a whole comment
      if (close == rest.npos) return {};
      rest.remove_prefix(close + 3);
      continue;
    }
    const bool isMeta = startsWithNoCase(rest, kMeta) && rest.size() > kMeta.size() &&
                        (isSpace(rest[kMeta.size()]) || rest[kMeta.size()] == '/');
    if (!isMeta) {
      rest.remove_prefix(1);
      continue;
    }
    const std::size_t close = rest.find('>');
    if (close == rest.npos) return {};
    const std::string name(charsetIn(rest.substr(kMeta.size(), close - kMeta.size())));
    if (!name.empty()) return voIsUnicode(name.c_str()) || startsWithNoCase(name, "ucs") ? std::string() : name;
    rest.remove_prefix(close);
  }
}

}  // namespace vomsg::detail
