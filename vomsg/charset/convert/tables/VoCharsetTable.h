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
extern const VoCharsetRecord gCharsetTable[];
