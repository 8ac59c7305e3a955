// Tables from the codes of a single-byte charset to Unicode, and the look-ups in both directions.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoMsgExport.h"

// `segments` is a run of segments, each made of a start code, a size word that nothing reads, and `count` Unicode
// values, the first of them for the start code; 0 means no character. A start code of 0xFFFFFFFF ends the run:
//   count 2, segments {0xA0, 0x60, 0x00A0, 0x0104, 0xFFFFFFFF} gives code 0xA1 the character U+0104.
struct VOMSG_API VoUnicodeTable {
  std::uint32_t count;
  const std::uint32_t* segments;

  // The Unicode value of a code. Without one: `replaceChar` when `enforce` is 1, else 0.
  unsigned int getCode(unsigned int code, signed char enforce, unsigned char replaceChar) const;
};

// The table of ISO 8859-1 to -10 and -13 to -15 under names like "iso-8859-1", ignoring case; null for all other names
// and for null. Aliases are not looked up: "iso_8859-5" has no table, "iso-8859-5" has one.
VOMSG_API const VoUnicodeTable* voGetUnicodeMappingTable(const char* charset);

// The code of a Unicode value, looked up in the table's first segment; values below 0xA0 are their own codes. Without
// one: 0 when `enforce` is 0, else `replaceChar`.
VOMSG_API unsigned int voConvertFromUnicode(const VoUnicodeTable* table, unsigned int ucs, signed char enforce,
                                            unsigned char replaceChar);
