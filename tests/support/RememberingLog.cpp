#include "tests/support/RememberingLog.h"

namespace vomsg::test {

RememberingLog::RememberingLog() { voMsgSetHostLog(this); }
RememberingLog::~RememberingLog() { voMsgSetHostLog(nullptr); }

void RememberingLog::writeDebugEntry(VoModuleID, unsigned lineLevel, const char* file, const char* func, unsigned,
                                     const char* text, const char*, unsigned char flag) {
  debug.push_back({lineLevel, file, func, text, flag});
}

void RememberingLog::writeWarnErrorEntry(unsigned lineLevel, unsigned char kind, const char* text, const char*) {
  warnError.push_back({lineLevel, "", "", text, kind});
}

int RememberingLog::count(const std::string& text) const {
  int n = 0;
  for (const Line& line : debug) n += line.text.find(text) != std::string::npos;
  return n;
}

}  // namespace vomsg::test
