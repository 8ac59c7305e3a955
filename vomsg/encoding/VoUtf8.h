// Single characters to and from UTF-8, with surrogate pairs packed in one word and deliberately without the
// 0x10000 offset of standard UTF-16: the two helpers are each other's inverse.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

// Writes 1 to 4 bytes to `out` and returns their number. A code above 0xFFFF is a pair (high unit << 16 | low unit).
VOMSG_API int voUcs2ToUtf8(unsigned int code, unsigned char* out);

// Reads 1 to 4 bytes and returns how many were used, at least 1. Continuation bytes are not checked, except that a NUL
// ends the sequence early, so a C string is never read past its end; what was cut that way gives U+FFFD.
VOMSG_API int voUtf8ToUcs2(const unsigned char* in, unsigned int& out);
