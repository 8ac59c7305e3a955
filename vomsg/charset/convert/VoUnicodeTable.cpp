#include "vomsg/charset/convert/VoUnicodeTable.h"

#include <algorithm>

#include "vomsg/charset/convert/tables/VoIso8859Tables.h"
#include "vomsg/foundation/VoMsgAscii.h"

namespace {

constexpr std::uint32_t kEndOfSegments = 0xFFFFFFFFu;
constexpr std::uint32_t kSegmentHead = 2;  // the start code and the size word

constexpr struct {
  const char* charset;
  const VoUnicodeTable* table;
} kTables[] = {
    {"iso-8859-1", &gIso8859_1Table},   {"iso-8859-2", &gIso8859_2Table},   {"iso-8859-3", &gIso8859_3Table},
    {"iso-8859-4", &gIso8859_4Table},   {"iso-8859-5", &gIso8859_5Table},   {"iso-8859-6", &gIso8859_6Table},
    {"iso-8859-7", &gIso8859_7Table},   {"iso-8859-8", &gIso8859_8Table},   {"iso-8859-9", &gIso8859_9Table},
    {"iso-8859-10", &gIso8859_10Table}, {"iso-8859-13", &gIso8859_13Table}, {"iso-8859-14", &gIso8859_14Table},
    {"iso-8859-15", &gIso8859_15Table},
};

}  // namespace

unsigned int VoUnicodeTable::getCode(unsigned int code, signed char enforce, unsigned char replaceChar) const {
  std::uint32_t value = 0;
  for (const std::uint32_t* at = segments; *at != kEndOfSegments; at += kSegmentHead + count)
    if (code >= *at && code - *at < count) {
      value = at[kSegmentHead + (code - *at)];
      break;
    }
  if (value) return value;
  return enforce == 1 ? replaceChar : 0;
}

const VoUnicodeTable* voGetUnicodeMappingTable(const char* charset) {
  const std::string_view name = vomsg::detail::viewOf(charset);
  if (!vomsg::detail::startsWithNoCase(name, "iso-8859-")) return nullptr;
  for (const auto& row : kTables)
    if (vomsg::detail::equalNoCase(row.charset, name)) return row.table;
  return nullptr;
}

unsigned int voConvertFromUnicode(const VoUnicodeTable* table, unsigned int ucs, signed char enforce,
                                  unsigned char replaceChar) {
  if (ucs < 0xA0u) return ucs;
  if (table) {
    const std::uint32_t* first = table->segments + kSegmentHead;
    const std::uint32_t* last = first + table->count;
    const std::uint32_t* at = std::find(first, last, ucs);
    if (at != last) return table->segments[0] + static_cast<unsigned int>(at - first);
  }
  return enforce == 0 ? 0 : replaceChar;
}
