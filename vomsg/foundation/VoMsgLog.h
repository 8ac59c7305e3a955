// The two ways a line gets from the library to the host's log.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

#if defined(__GNUC__)
#define VOMSG_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define VOMSG_PRINTF(text, first)
#endif

// A trace or failure line, given to the host's debug entry when module 1 is enabled; nothing is formatted
// otherwise. `file` names the source file's class, `func` the bare function, `tag` is the message's UUID
// string (may be empty; null leaves the tag out). Text and line are cut at 1022 bytes. The library uses the levels
// 0, 1 and 9.
VOMSG_API void voMessageLog(unsigned level, const char* file, const char* func, unsigned line, const char* tag,
                            const char* fmt, ...) VOMSG_PRINTF(6, 7);

// A line that must also reach the host's warning and error log when the host's level is at least `level`.
// The library uses the levels 0 and 2.
VOMSG_API void voMsgDiagnosticLog(unsigned level, const char* file, const char* func, unsigned line, const char* tag,
                                  const char* fmt, ...) VOMSG_PRINTF(6, 7);
