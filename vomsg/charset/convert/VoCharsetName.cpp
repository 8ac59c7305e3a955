#include "vomsg/charset/convert/VoCharsetName.h"

#include "vomsg/charset/convert/VoMsgIcuHandle.h"
#include "vomsg/charset/convert/tables/VoCharsetTable.h"
#include "vomsg/foundation/VoMsgAscii.h"

namespace {

using vomsg::detail::equalNoCase;
using vomsg::detail::startsWithNoCase;
using vomsg::detail::viewOf;

bool hasAlias(std::string_view aliases, std::string_view name) {
  while (!aliases.empty()) {
    const std::string_view alias = aliases.substr(0, aliases.find(' '));
    if (equalNoCase(alias, name)) return true;
    aliases.remove_prefix(alias.size() == aliases.size() ? alias.size() : alias.size() + 1);
  }
  return false;
}

}  // namespace

const char* voGetFQNCharsetName(const char* name) {
  if (!name) return nullptr;
  const std::string_view wanted = name;
  // An empty name equals no alias: tokens are never empty.
  for (const VoCharsetRecord* record = gCharsetTable; record->name; ++record)
    if (equalNoCase(record->name, wanted) || hasAlias(viewOf(record->aliases), wanted)) return record->name;
  return name;
}

bool voIsEqualCharsetName(const char* a, const char* b) {
  if (!a || !b) return false;
  return equalNoCase(a, b) || equalNoCase(voGetFQNCharsetName(a), voGetFQNCharsetName(b));
}

bool voIsRightCharsetName(const char* name) { return vomsg::detail::openIcu(voGetFQNCharsetName(name)) != nullptr; }

bool voIsSinglebyteCharset(const char* name) {
  const auto converter = vomsg::detail::openIcu(voGetFQNCharsetName(name));
  return converter && vomsg::detail::maxBytesPerChar(*converter) == 1;
}

const char* voCodepageToCharset(int codepage) {
  for (const VoCharsetRecord* record = gCharsetTable; record->name; ++record)
    if (record->codepage == codepage) return record->name;
  return nullptr;
}

bool voIsUnicode(const char* name) {
  const std::string_view text = viewOf(name);
  if (equalNoCase(text, "unicode")) return true;
  for (const char* prefix : {"utf-16", "utf16", "utf-32", "utf32"})
    if (startsWithNoCase(text, prefix)) return true;
  return false;
}
