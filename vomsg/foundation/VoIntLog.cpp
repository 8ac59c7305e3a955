#include "vomsg/foundation/VoIntLog.h"

#include "vomsg/foundation/VoMsgStandAloneLog.h"

namespace {

// Static objects of the host may log before this file's constructors ran and after its destructors would have:
// the object is initialised at compile time and never destroyed.
union Immortal {
  constexpr Immortal() : log() {}
  ~Immortal() {}
  VoMsgStandAloneLog log;
};

constinit Immortal gStandAlone;
constinit VoIntLog* gpHostLog = nullptr;

}  // namespace

// Weak, so that a host that links these objects statically may bring its own; in the shared library the host's
// definition takes precedence by the ordinary order of symbol look-up.
__attribute__((weak)) VoIntLog* grGetLog() { return gpHostLog ? gpHostLog : &gStandAlone.log; }

void voMsgSetHostLog(VoIntLog* log) { gpHostLog = log; }
