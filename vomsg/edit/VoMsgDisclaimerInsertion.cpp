// insertDisclaimerMessage: looks at the message, lets the dispatch choose, and runs the steps it asks for.

#include <memory>
#include <string>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/edit/VoMsgContentEditor.h"
#include "vomsg/edit/VoMsgDisclaimerDispatch.h"
#include "vomsg/edit/VoMsgTextEditing.h"
#include "vomsg/entity/VoMsgEditUndo.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace {

using namespace vomsg::detail;

constexpr char kLogSource[] = "VoMsgRfc822Message";
constexpr char kFunction[] = "insertDisclaimerMessage";  // for lines from within its lambda

// A part that is, declares or holds a TNEF stream.
bool isTnefPart(VoMsgEntity& child) {
  if (VoMsgRfc822Message::_isTnefMessage(&child) || VoMsgRfc822Message::_isTnefMessage(child.getChildEntity()))
    return true;
  const std::string_view type = viewOf(child.getContentType());
  for (const char* name : {"application/ms-tnef", "application/x-ms-tnef", "application/vnd.ms-tnef"})
    if (equalNoCase(type, name)) return true;
  return false;
}

class MessageSteps : public DisclaimerSteps {
 public:
  MessageSteps(VoMsgRfc822Message& message, const DisclaimerPlan& plan, VoMsgResourceLocator* disclaimer,
               const char* srcCharset)
      : mMessage(message), mPlan(plan), mDisclaimer(disclaimer), mSrcCharset(srcCharset) {}

  bool hasAlternative() override { return mMessage._hasAlternative(); }
  bool hasTextCalendar() override { return mMessage._hasTextCalendar(); }

  VoErrorCode run(DisclaimerStep step, const char* charset) override {
    if (mShortage.seen()) return mShortage.code();  // what was found out about the message may be wrong
    switch (step) {
      case DisclaimerStep::text:
        return intoText(charset);
      case DisclaimerStep::html:
        return intoHtml(charset);
      case DisclaimerStep::calendar:
        return call(&VoMsgRfc822Message::_defaultDisclaimerMessageTextCalendar, charset);
      case DisclaimerStep::newBody:
        return call(&VoMsgRfc822Message::_newDisclaimerMessage, charset);
      case DisclaimerStep::wrap:
        return wrapOriginal(&VoMsgRfc822Message::_wrapDisclaimerMessage, charset);
      case DisclaimerStep::wrapNew:
        return wrapOriginal(&VoMsgRfc822Message::_wrapNewDisclaimerMessage, charset);
      case DisclaimerStep::attach:
        return call(&VoMsgRfc822Message::_DisclaimerMessageAttachment, charset);
    }
    return kVoBadArgument;
  }

  // A message without type is given one, until it turns out that all of it is wrapped, or that nothing helps.
  VoErrorCode declareType() {
    mUntyped = std::make_unique<EditUndo>(mMessage);
    const std::string charset = charsetOfText(mMessage);
    VoErrorCode code = mMessage.setHeaderValue("Content-Type", "text/plain", "us-ascii", nullptr);
    if (!voFailed(code) && !mMessage.getHeader("MIME-Version"))
      code = mMessage.setHeaderValue("MIME-Version", "1.0", "us-ascii", nullptr);
    if (voFailed(code)) return code;
    return mMessage.setHeaderParameterValue("Content-Type", "charset", charset.c_str(), "us-ascii", nullptr);
  }
  void keepType() {
    if (mUntyped) mUntyped->letStand();
  }

 private:
  using Helper = VoErrorCode (VoMsgRfc822Message::*)(VoMsgDisclaimerPosition_e, VoMsgResourceLocator*, const char*,
                                                     const char*);

  VoErrorCode call(Helper helper, const char* charset) {
    return (mMessage.*helper)(mPlan.position, mDisclaimer, mSrcCharset, charset);
  }

  VoErrorCode wrapOriginal(Helper helper, const char* charset) {
    mUntyped.reset();
    return call(helper, charset);
  }

  // A message whose only text is HTML takes the disclaimer there, when the caller allows HTML.
  VoErrorCode intoText(const char* charset) {
    const VoErrorCode code = call(&VoMsgRfc822Message::_defaultDisclaimerMessage, charset);
    if (code != kVoDisclaimerCopyFailed || !(mPlan.option & kVoDisclaimerHtml)) return code;
    return call(&VoMsgRfc822Message::_defaultDisclaimerMessageHTML, charset);
  }

  VoErrorCode intoHtml(const char* charset) {
    return call(&VoMsgRfc822Message::_defaultDisclaimerMessageHTML, charset);
  }

  VoMsgRfc822Message& mMessage;
  const DisclaimerPlan& mPlan;
  VoMsgResourceLocator* const mDisclaimer;
  const char* const mSrcCharset;
  const ShortageWatch mShortage;
  std::unique_ptr<EditUndo> mUntyped;  // has the header block without Content-Type
};

}  // namespace

VoErrorCode VoMsgRfc822Message::insertDisclaimerMessage(VoMsgDisclaimerPosition_e position,
                                                        VoMsgResourceLocator* disclaimer, int option,
                                                        const char* srcCharset, const char* preferCharset) {
  const char* const tag = _getUUIDString();
  VO_LOG(9, tag, "begin: insertDisclaimerMessage");
  if (!disclaimer || !srcCharset) {
    VO_LOG(1, tag, "insertDisclaimerMessage failed.");
    return kVoBadArgument;
  }
  VO_LOG(9, tag, "VoMsgDisclaimerOption_e: [%d]", option);
  VO_LOG(9, tag, "srcCharset                : [%s]", srcCharset);
  VO_LOG(9, tag, "preferCharset                : [%s]", preferCharset ? preferCharset : "");
  if (!preferCharset) {
    preferCharset = "utf-8";
  } else if (!voIsRightCharsetName(preferCharset)) {
    VO_LOG(1, tag, "invalid preferCharset:%s", preferCharset);
    return kVoBadArgument;
  }

  const VoErrorCode code = guarded([&]() -> VoErrorCode {
    if (!getEntityHeader()) return kVoReadFailed;
    const bool isTyped = getContentType() != nullptr;
    DisclaimerShape shape;
    if (isTyped) {
      shape.isAlternative = _isAlternative(this);
      shape.isTextCalendar = _isTextCalendar(this);
      for (VoMsgEntity* child = getChildEntity(); child && !shape.hasTnefChild; child = child->getNextSiblingEntity())
        shape.hasTnefChild = isTnefPart(*child);
    }
    const DisclaimerPlan plan = planDisclaimer(option, position, shape);
    MessageSteps steps(*this, plan, disclaimer, srcCharset);
    if (!isTyped) {
      voMessageLog(9, kLogSource, kFunction, __LINE__, tag, "content type           : [no content type]");
      const bool isWrapped = (plan.option & (kVoDisclaimerWrap | kVoDisclaimerAttach)) == kVoDisclaimerWrap;
      const VoErrorCode declared = isWrapped || _isMultiEmbededEntity() ? kVoSuccess : steps.declareType();
      if (voFailed(declared)) return declared;
    } else {
      if (plan.htmlIsWrapped)
        voMessageLog(9, kLogSource, kFunction, __LINE__, tag,
                     "HTML mail is wrapped. Option is automatically Wrap_New.");
      voMessageLog(9, kLogSource, kFunction, __LINE__, tag, "content type           : [%s]", getContentType());
    }
    const VoErrorCode result = dispatchDisclaimer(steps, plan.option, preferCharset);
    if (!voFailed(result)) steps.keepType();
    return result;
  });
  if (voFailed(code)) {
    VO_LOG(1, tag, "insertDisclaimerMessage failed.");
    return code;
  }
  delete disclaimer;
  VO_LOG(9, tag, "end  : insertDisclaimerMessage");
  return kVoSuccess;
}
