// The charsets that have a canonical name, with their Windows code pages and the other names that mail gives them.
// An entry {932, "Shift_jis", "x-sjis sjis"} says: code page 932 means "Shift_jis", and so do "x-sjis" and "SJIS".
#pragma once

#include <cstdint>

struct VoCharsetRecord {
  std::int32_t codepage;  // -1: none
  const char* name;       // the canonical spelling, handed out as it stands
  const char* aliases;    // separated by single blanks; null: none
};

// Ended by a record without a name. The order counts: look-ups give the first match.
//
// Some rows look wrong and must stay: names and code pages in stored messages were written with them. "iso-8859-1"
// answers to code page 1252, "iso_8859-5" has an underscore and 28585, both ISO-2022 rows carry 50225, and Windows
// code page 1252 has no row, so that its name passes through.
inline constexpr VoCharsetRecord gCharsetTable[] = {
    {20105, "us-ascii", "ascii iso-686"},
    {65001, "utf-8", "utf8"},
    {65000, "utf-7", "utf7"},
    {1252, "iso-8859-1", nullptr},
    {28592, "iso-8859-2", nullptr},
    {28593, "iso-8859-3", nullptr},
    {28594, "iso-8859-4", nullptr},
    {28585, "iso_8859-5", nullptr},
    {28596, "iso-8859-6", nullptr},
    {28597, "iso-8859-7", nullptr},
    {28598, "iso-8859-8", nullptr},
    {28599, "iso-8859-9", nullptr},
    {-1, "iso-8859-10", nullptr},
    {-1, "iso-8859-13", nullptr},
    {-1, "iso-8859-14", nullptr},
    {-1, "iso-8859-15", nullptr},
    {1250, "Windows-1250", nullptr},
    {1251, "Windows-1251", nullptr},
    {1253, "Windows-1253", nullptr},
    {1254, "Windows-1254", nullptr},
    {932, "Shift_jis", "x-sjis sjis ms_kanji shift-jis"},
    {51932, "euc-jp", "x-euc-jp"},
    {50220, "iso-2022-jp", "jis"},
    {1257, "Windows-1257", nullptr},
    {950, "big5", nullptr},
    {936, "gb2312", "euc-cn cn-gb cn-gb2312"},
    {52936, "hz-gb-2312", "hz-gb"},
    {50225, "iso-2022-cn", nullptr},
    {50225, "iso-2022-kr", nullptr},
    {949, "euc-kr", "ks_c_5601 ks_c_5601-1987 x-euc-kr"},
    {862, "dos-862", nullptr},
    {1256, "Windows-1256", nullptr},
    {720, "dos-720", nullptr},
    {874, "Windows-874", nullptr},
    {1258, "Windows-1258", nullptr},
    {20866, "koi8-r", nullptr},
    {0, nullptr, nullptr},
};
