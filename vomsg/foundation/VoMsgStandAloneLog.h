// A log object for programs without a host log: an enable switch, a level and two sinks.
#pragma once

#include <cstdio>

#include "vomsg/foundation/VoIntLog.h"

class VOMSG_API VoMsgStandAloneLog final : public VoIntLog {
 public:
  VoMsgStandAloneLog() = default;  // disabled, level 0, no sinks

  bool isEnabled(VoModuleID module) override;
  unsigned getLogLevel() override;
  void writeDebugEntry(VoModuleID module, unsigned level, const char* file, const char* func, unsigned line,
                       const char* text, const char* second, unsigned char flag) override;
  void writeWarnErrorEntry(unsigned level, unsigned char kind, const char* text, const char* second) override;

  void setEnabled(bool enabled) { mEnabled = enabled; }  // module 1
  void setLogLevel(unsigned level) { mLevel = level; }
  void setDebugSink(std::FILE* sink) { mpDebugSink = sink; }          // borrowed, may be null
  void setWarnErrorSink(std::FILE* sink) { mpWarnErrorSink = sink; }  // borrowed, may be null

 private:
  bool mEnabled = false;
  unsigned mLevel = 0;
  std::FILE* mpDebugSink = nullptr;
  std::FILE* mpWarnErrorSink = nullptr;
};
