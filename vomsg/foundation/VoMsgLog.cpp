#include "vomsg/foundation/VoMsgLog.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>

#include "vomsg/foundation/VoIntLog.h"

namespace {

constexpr unsigned char kDebugFlag = 2;
constexpr unsigned char kKindError = 3;
constexpr unsigned char kKindWarning = 1;

// A line as the host gets it: "[process:1] tag text", without the tag and its blank when there is none.
class Line {
 public:
  VOMSG_PRINTF(3, 0) Line(const char* tag, const char* fmt, std::va_list arguments) {
    char text[1024] = "";
    std::vsnprintf(text, sizeof text - 1, fmt, arguments);
    const int process = static_cast<int>(getpid());
    const int length = tag ? std::snprintf(mText, sizeof mText - 1, "[%d:%d] %s %s", process, 1, tag, text)
                           : std::snprintf(mText, sizeof mText - 1, "[%d:%d] %s", process, 1, text);
    if (length < 0) mText[0] = '\0';
  }
  const char* text() const { return mText; }

 private:
  char mText[1024] = "";
};

}  // namespace

// The log object is asked for anew at every step, because the host may exchange it at any time.

void voMessageLog(unsigned level, const char* file, const char* func, unsigned line, const char* tag, const char* fmt,
                  ...) {
  if (!grGetLog()->isEnabled(kVoModule)) return;
  std::va_list arguments;
  va_start(arguments, fmt);
  const Line entry(tag, fmt, arguments);
  va_end(arguments);
  if (grGetLog()->isEnabled(kVoModule))
    grGetLog()->writeDebugEntry(kVoModule, level, file, func, line, entry.text(), nullptr, kDebugFlag);
}

void voMsgDiagnosticLog(unsigned level, const char* file, const char* func, unsigned line, const char* tag,
                        const char* fmt, ...) {
  if (!grGetLog()->isEnabled(kVoModule) && grGetLog()->getLogLevel() < level) return;
  std::va_list arguments;
  va_start(arguments, fmt);
  const Line entry(tag, fmt, arguments);
  va_end(arguments);
  if (grGetLog()->isEnabled(kVoModule))
    grGetLog()->writeDebugEntry(kVoModule, level, file, func, line, entry.text(), nullptr, kDebugFlag);
  if (grGetLog()->getLogLevel() < level) return;
  grGetLog()->writeWarnErrorEntry(level, level == 0 ? kKindError : kKindWarning, entry.text(), nullptr);
}
