// The upper halves of the ISO 8859 charsets, one segment from 0xA0 each; VoUnicodeTable.h explains the words.
#pragma once

#include "vomsg/charset/convert/VoUnicodeTable.h"

extern const VoUnicodeTable gIso8859_1Table;
extern const VoUnicodeTable gIso8859_2Table;
extern const VoUnicodeTable gIso8859_3Table;
extern const VoUnicodeTable gIso8859_4Table;
extern const VoUnicodeTable gIso8859_5Table;
extern const VoUnicodeTable gIso8859_6Table;
extern const VoUnicodeTable gIso8859_7Table;
extern const VoUnicodeTable gIso8859_8Table;
extern const VoUnicodeTable gIso8859_9Table;
extern const VoUnicodeTable gIso8859_10Table;
extern const VoUnicodeTable gIso8859_13Table;
extern const VoUnicodeTable gIso8859_14Table;
extern const VoUnicodeTable gIso8859_15Table;
