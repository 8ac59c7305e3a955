// The logging object that the host supplies. The library only calls it; what the numbers mean is the host's.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

using VoModuleID = unsigned int;
inline constexpr VoModuleID kVoModule = 1;  // the module that the library logs as

// Implemented by the host, whose table of virtual operations holds these four and nothing before them; so there is no
// virtual destructor, and the library never destroys a log.
class VOMSG_API VoIntLog {
 public:
  // Whether lines of this module are wanted at all; the library always asks for module 1.
  virtual bool isEnabled(VoModuleID module) = 0;
  // The host's level; a diagnostic line of a higher level never reaches writeWarnErrorEntry.
  virtual unsigned getLogLevel() = 0;
  // One trace line. `second` is always null and `flag` always 2.
  virtual void writeDebugEntry(VoModuleID module, unsigned level, const char* file, const char* func, unsigned line,
                               const char* text, const char* second, unsigned char flag) = 0;
  // One line for the warning and error log: `kind` is 3 for level 0, else 1; `second` is always null.
  virtual void writeWarnErrorEntry(unsigned level, unsigned char kind, const char* text, const char* second) = 0;

 protected:
  ~VoIntLog() = default;
};

// The process's log object, never null. A host may define this function itself (its definition then takes
// precedence over the library's) or hand an object to voMsgSetHostLog. Without either, a stand-alone object
// serves that has the module disabled, level 0 and no sinks.
VOMSG_API VoIntLog* grGetLog();

// Makes `log` (borrowed; it must outlive its use) the object that the library's own grGetLog returns.
// Null brings the stand-alone object back.
VOMSG_API void voMsgSetHostLog(VoIntLog* log);
