// Names are looked up by hash in a table that is made at compile time: every canonical name and every alias leads to
// its record. Each conversion of a header value asks some ten times.
#include "vomsg/charset/convert/VoCharsetName.h"

#include <array>
#include <cstdint>

#include "vomsg/charset/convert/VoMsgCharsetId.h"
#include "vomsg/charset/convert/VoMsgIcuHandle.h"
#include "vomsg/charset/convert/tables/VoCharsetTable.h"
#include "vomsg/foundation/VoMsgAscii.h"

namespace {

using vomsg::detail::CharsetId;
using vomsg::detail::equalNoCase;
using vomsg::detail::startsWithNoCase;
using vomsg::detail::viewOf;

constexpr std::size_t kLongestName = 32;  // the table has none of this length

constexpr std::uint32_t hashOf(std::string_view name) {
  std::uint32_t hash = static_cast<std::uint32_t>(name.size());
  for (const char c : name) hash = hash * 33 + (static_cast<unsigned char>(c) | 0x20u);
  return hash ^ hash >> 11;
}

class NameTable {
 public:
  constexpr NameTable() {
    for (int record = 0; gCharsetTable[record].name; ++record) {
      add(gCharsetTable[record].name, record);
      const char* const aliases = gCharsetTable[record].aliases;
      std::string_view rest = aliases ? std::string_view(aliases) : std::string_view();
      while (!rest.empty()) {
        const std::string_view alias = rest.substr(0, rest.find(' '));
        add(alias, record);
        rest.remove_prefix(alias.size() == rest.size() ? alias.size() : alias.size() + 1);
      }
    }
  }
  int find(std::string_view name) const {
    if (name.size() >= kLongestName) return CharsetId::kUnknown;
    for (std::size_t at = hashOf(name) % kBuckets; !mEntries[at].name.empty(); at = (at + 1) % kBuckets)
      if (equalNoCase(mEntries[at].name, name)) return mEntries[at].record;
    return CharsetId::kUnknown;
  }

 private:
  static constexpr std::size_t kBuckets = 256;
  struct Entry {
    std::string_view name;
    int record = CharsetId::kUnknown;
  };

  // A name stands in one record only, so that the first match is the only one.
  constexpr void add(std::string_view name, int record) {
    std::size_t at = hashOf(name) % kBuckets;
    while (!mEntries[at].name.empty()) at = (at + 1) % kBuckets;
    mEntries[at] = {name, record};
  }

  std::array<Entry, kBuckets> mEntries{};
};

constexpr NameTable kNames;

}  // namespace

CharsetId vomsg::detail::charsetId(const char* name) noexcept {
  if (!name) return {};
  const int record = kNames.find(name);
  return {record < 0 ? name : gCharsetTable[record].name, record};
}

const char* voGetFQNCharsetName(const char* name) { return vomsg::detail::charsetId(name).name; }

bool voIsEqualCharsetName(const char* a, const char* b) {
  if (!a || !b) return false;
  const CharsetId first = vomsg::detail::charsetId(a);
  const CharsetId second = vomsg::detail::charsetId(b);
  return first.record == second.record && (first.record >= 0 || equalNoCase(a, b));
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
