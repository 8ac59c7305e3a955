// Which way a disclaimer goes into a message: decided from the option bits, the shape of the message and what the ways
// tried so far answered. It knows no message, so that every path can be walked without building one.
#pragma once

#include <cstdint>

#include "vomsg/entity/VoMsgMailMessage.h"

namespace vomsg::detail {

enum class DisclaimerStep : std::uint8_t { text, html, calendar, newBody, wrap, wrapNew, attach };

// The message, as the dispatch sees it.
class DisclaimerSteps {
 public:
  virtual ~DisclaimerSteps();
  virtual bool hasAlternative() = 0;
  virtual bool hasTextCalendar() = 0;
  virtual VoErrorCode run(DisclaimerStep step, const char* charset) = 0;
};

// What the type of the message and its direct children say before the dispatch.
struct DisclaimerShape {
  bool isAlternative = false;
  bool isTextCalendar = false;
  bool hasTnefChild = false;
};

struct DisclaimerPlan {
  int option;
  VoMsgDisclaimerPosition_e position;
  bool htmlIsWrapped;  // the mode was forced because of HTML
};

DisclaimerPlan planDisclaimer(int option, VoMsgDisclaimerPosition_e position, const DisclaimerShape& shape);

// Runs the steps that `option`, as planned, asks for, until one succeeds or nothing is left to try.
VoErrorCode dispatchDisclaimer(DisclaimerSteps& steps, int option, const char* preferCharset);

}  // namespace vomsg::detail
