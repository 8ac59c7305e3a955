#include "vomsg/foundation/VoMsgStandAloneLog.h"

bool VoMsgStandAloneLog::isEnabled(VoModuleID module) { return module == kVoModule && mEnabled; }

unsigned VoMsgStandAloneLog::getLogLevel() { return mLevel; }

void VoMsgStandAloneLog::writeDebugEntry(VoModuleID, unsigned level, const char* file, const char* func, unsigned line,
                                         const char* text, const char*, unsigned char) {
  if (mpDebugSink) std::fprintf(mpDebugSink, "%u %s::%s:%u %s\n", level, file, func, line, text);
}

void VoMsgStandAloneLog::writeWarnErrorEntry(unsigned level, unsigned char kind, const char* text, const char*) {
  if (mpWarnErrorSink) std::fprintf(mpWarnErrorSink, "%u/%u %s\n", level, kind, text);
}
