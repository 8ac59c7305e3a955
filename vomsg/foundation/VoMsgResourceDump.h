// Hex dump of a whole resource, for diagnostics.
#pragma once

#include <cstdio>

#include "vomsg/foundation/VoMsgExport.h"

class VoMsgResourceLocator;

// Dumps the data part in pieces of 1280 bytes. Nothing when an argument is null.
VOMSG_API void dumpContentResource(std::FILE* out, VoMsgResourceLocator* resource);
