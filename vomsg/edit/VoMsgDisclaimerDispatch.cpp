#include "vomsg/edit/VoMsgDisclaimerDispatch.h"

#include "vomsg/charset/convert/VoCharsetName.h"

namespace vomsg::detail {

namespace {

constexpr char kUtf8[] = "utf-8";

bool isCode(VoErrorCode code, VoErrorCode expected) { return (code & 0xFFFFu) == (expected & 0xFFFFu); }

// The text does not fit: in this charset, or at all.
bool isTextFailure(VoErrorCode code) {
  return isCode(code, kVoConversionFailed) || isCode(code, kVoDisclaimerCopyFailed);
}

class Dispatch {
 public:
  Dispatch(DisclaimerSteps& steps, int option, const char* charset)
      : mSteps(steps), mOption(option), mCharset(charset) {}

  VoErrorCode run() {
    switch (mOption & kVoDisclaimerModeMask) {
      case kVoDisclaimerBody:
        if (mSteps.hasAlternative()) return intoAlternative();
        return mSteps.hasTextCalendar() ? intoCalendar() : intoText();
      case kVoDisclaimerNewBody: {
        const VoErrorCode code = step(DisclaimerStep::newBody);
        return isRefusal(code) ? wrap() : code;
      }
      case kVoDisclaimerWrap:
        return step(has(kVoDisclaimerAttach) ? DisclaimerStep::attach : DisclaimerStep::wrap);
      default:
        return wrap();
    }
  }

 private:
  bool has(int bit) const { return (mOption & bit) != 0; }
  // A refusal that the caller wants answered by wrapping.
  bool isRefusal(VoErrorCode code) const {
    return isCode(code, kVoDisclaimerRefused) && has(kVoDisclaimerWrapOnRefusal);
  }
  bool asksForWrap(VoErrorCode code) const { return isTextFailure(code) || isRefusal(code); }

  VoErrorCode step(DisclaimerStep which) { return mSteps.run(which, mCharset); }
  VoErrorCode wrap() { return step(has(kVoDisclaimerAttach) ? DisclaimerStep::attach : DisclaimerStep::wrapNew); }
  VoErrorCode stepWithRetry(DisclaimerStep which) {
    const VoErrorCode code = step(which);
    if (!isTextFailure(code) || voIsEqualCharsetName(mCharset, kUtf8)) return code;
    return mSteps.run(which, kUtf8);
  }

  // A message may hold an alternative without HTML that is an invitation.
  VoErrorCode intoAlternative() {
    if (!has(kVoDisclaimerHtml)) return wrap();
    VoErrorCode code = stepWithRetry(DisclaimerStep::html);
    if (isTextFailure(code)) code = wrap();
    if (asksForWrap(code)) {
      code = step(DisclaimerStep::calendar);
      if (asksForWrap(code)) code = wrap();
    }
    return code;
  }

  VoErrorCode intoCalendar() {
    const VoErrorCode code = stepWithRetry(DisclaimerStep::calendar);
    return asksForWrap(code) ? wrap() : code;
  }

  VoErrorCode intoText() {
    const VoErrorCode code = stepWithRetry(DisclaimerStep::text);
    if (isCode(code, kVoConversionFailed)) return step(DisclaimerStep::newBody);
    return asksForWrap(code) ? wrap() : code;
  }

  DisclaimerSteps& mSteps;
  const int mOption;
  const char* const mCharset;
};

}  // namespace

DisclaimerSteps::~DisclaimerSteps() = default;

// The bits are read from the option as it came in: a forced mode keeps nothing of it but the wish for an attachment.
DisclaimerPlan planDisclaimer(int option, VoMsgDisclaimerPosition_e position, const DisclaimerShape& shape) {
  DisclaimerPlan plan{option, position, false};
  const int attach = option & kVoDisclaimerAttach;
  if (shape.isAlternative) {
    if (option & kVoDisclaimerHtml) return plan;
    plan.option = kVoDisclaimerWrapNew | attach;
    plan.htmlIsWrapped = true;
  } else if (!shape.isTextCalendar && shape.hasTnefChild && !(option & kVoDisclaimerTnefOk)) {
    if (option & kVoDisclaimerTnefNewBody) {
      plan.option = kVoDisclaimerNewBody | attach;
      plan.position = kVoDisclaimerBottom;
    } else {
      plan.option = kVoDisclaimerWrapNew | attach;
    }
  }
  return plan;
}

VoErrorCode dispatchDisclaimer(DisclaimerSteps& steps, int option, const char* preferCharset) {
  return Dispatch(steps, option, preferCharset).run();
}

}  // namespace vomsg::detail
