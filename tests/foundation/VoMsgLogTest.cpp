#include "vomsg/foundation/VoMsgLog.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "tests/support/RememberingLog.h"
#include "vomsg/foundation/VoMsgStandAloneLog.h"

namespace {

using vomsg::test::RememberingLog;

std::string prefix() { return "[" + std::to_string(getpid()) + ":1] "; }

TEST(VoMsgLog, ComposesProcessTagAndText) {
  RememberingLog log;
  const std::string longText(3000, 'x');
  voMessageLog(9, "Class", "member", 7, "TAG", "%d of %s", 3, "four");
  voMessageLog(1, "Class", "member", 7, "", "text");
  voMessageLog(0, "Class", "member", 7, nullptr, "%s", longText.c_str());
  ASSERT_EQ(log.debug.size(), 3u);
  EXPECT_EQ(log.debug[0].text, prefix() + "TAG 3 of four");
  EXPECT_EQ(log.debug[0].level, 9u);
  EXPECT_EQ(log.debug[0].file + "::" + log.debug[0].func, "Class::member");
  EXPECT_EQ(log.debug[0].flagOrKind, 2);
  EXPECT_EQ(log.debug[1].text, prefix() + " text");
  EXPECT_EQ(log.debug[2].text, (prefix() + longText).substr(0, 1022));
  EXPECT_TRUE(log.warnError.empty());
}

// The place of a virtual operation in its class's table, which is what a pointer to it holds.
template <class Operation>
std::ptrdiff_t slotOf(Operation operation) {
  std::ptrdiff_t raw;
  std::memcpy(&raw, &operation, sizeof raw);
  return (raw - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(VoIntLog, HasTheSlotsThatHostsFill) {
  EXPECT_EQ(slotOf(&VoIntLog::isEnabled), 0);
  EXPECT_EQ(slotOf(&VoIntLog::getLogLevel), 1);
  EXPECT_EQ(slotOf(&VoIntLog::writeDebugEntry), 2);
  EXPECT_EQ(slotOf(&VoIntLog::writeWarnErrorEntry), 3);
}

TEST(VoMsgLog, RoutesDiagnosticsByLevel) {
  struct Route {
    bool enabled;
    unsigned hostLevel;
    unsigned lineLevel;
    std::size_t debugLines;
    std::size_t warnErrorLines;
  };
  constexpr Route kRoutes[] = {
      {true, 2, 2, 1, 1},           {true, 1, 2, 1, 0},  {false, 2, 2, 0, 1}, {false, 1, 2, 0, 0},
      {true, 0, 0, 1, 1},           {false, 0, 0, 0, 1},  // an error always reaches the warning and error log
      {true, 0x80000000u, 2, 1, 1},
  };
  for (const Route& route : kRoutes) {
    SCOPED_TRACE(testing::Message() << route.enabled << " host " << route.hostLevel << " line " << route.lineLevel);
    RememberingLog log;
    log.enabled = route.enabled;
    log.level = route.hostLevel;
    voMsgDiagnosticLog(route.lineLevel, "Class", "member", 1, "T", "text");
    EXPECT_EQ(log.debug.size(), route.debugLines);
    ASSERT_EQ(log.warnError.size(), route.warnErrorLines);
    for (const RememberingLog::Line& line : log.warnError) {
      EXPECT_EQ(line.text, prefix() + "T text");
      EXPECT_EQ(line.level, route.lineLevel);
      EXPECT_EQ(line.flagOrKind, route.lineLevel == 0 ? 3 : 1);
    }
  }
}

TEST(VoMsgLog, StandAloneObjectServesWithoutHost) {
  voMsgDiagnosticLog(0, "Class", "member", 1, "", "no sink, no harm");
  char written[256] = "";
  std::FILE* const sink = fmemopen(written, sizeof written, "w");
  VoMsgStandAloneLog log;
  log.setEnabled(true);
  log.setDebugSink(sink);
  voMsgSetHostLog(&log);
  voMsgDiagnosticLog(2, "Class", "member", 1, "", "for the debug sink alone");
  voMsgSetHostLog(nullptr);
  std::fclose(sink);
  EXPECT_NE(std::string(written).find("for the debug sink alone"), std::string::npos);
  EXPECT_FALSE(log.isEnabled(2) || grGetLog()->isEnabled(1));
}

}  // namespace
