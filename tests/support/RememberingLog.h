// A host log that remembers: install it for one test and look at the lines.
#pragma once

#include <string>
#include <vector>

#include "vomsg/foundation/VoIntLog.h"

namespace vomsg::test {

class RememberingLog final : public VoIntLog {
 public:
  struct Line {
    unsigned level;
    std::string file;  // empty for the warning and error log
    std::string func;
    std::string text;
    unsigned char flagOrKind;
  };

  RememberingLog();  // installs itself
  ~RememberingLog();

  bool isEnabled(VoModuleID module) override { return module == 1 && enabled; }
  unsigned getLogLevel() override { return level; }
  void writeDebugEntry(VoModuleID module, unsigned level, const char* file, const char* func, unsigned line,
                       const char* text, const char* second, unsigned char flag) override;
  void writeWarnErrorEntry(unsigned level, unsigned char kind, const char* text, const char* second) override;

  // How many debug lines hold `text`.
  int count(const std::string& text) const;

  bool enabled = true;
  unsigned level = 9;
  std::vector<Line> debug;
  std::vector<Line> warnError;
};

}  // namespace vomsg::test
