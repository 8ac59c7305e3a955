// Hex dump of memory, for diagnostics.
#pragma once

#include <cstdio>

#include "vomsg/foundation/VoMsgExport.h"

// Lines of 16 bytes: address (low 32 bits), hex in groups of four, text. Nothing when an argument is null or zero.
VOMSG_API void dumpMemoryHex(std::FILE* out, const char* data, unsigned length);
