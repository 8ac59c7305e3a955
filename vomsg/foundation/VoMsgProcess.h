// Version and process set-up.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

// Writes "[VO Message Module] 1.100.0.0000" into `buffer`, cut to `size` bytes as snprintf does; returns what
// snprintf returns.
VOMSG_API int voMsgGetVersion(char* buffer, unsigned size);

// Reseeds the 48-bit generator with (seconds & 0xFFFF) | (seed << 16), for processes forked from one parent.
VOMSG_API void vo_initProcess(unsigned seed);
