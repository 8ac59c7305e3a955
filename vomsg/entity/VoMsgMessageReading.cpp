// A frame is entered: the message takes its source over, which opens it, and its parser starts. Then, in turn, the
// innermost parser either waits for a nested message, whose frame is entered, or is done, whose frame is left and whose
// code the parser around it goes on with.
//
// Messages can lie in each other a hundred thousand levels deep. Descriptors and buffers do not: beyond the first few
// levels a parser that waits closes its source.
#include "vomsg/entity/VoMsgMessageReading.h"

#include "vomsg/entity/VoMsgEntityInside.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgDecodedBudget.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::detail {

namespace {

constexpr std::size_t kOpenSources = 24;  // enough for whatever the default level lets in

}  // namespace

VoErrorCode MessageReading::run(VoMsgRfc822Message& root, VoMsgResourceLocator* source, const MessagePlace& place) {
  const DecodedScope scope(DecodedBudget::forMessage());  // one for all that is inside
  VoErrorCode code = enter(root, source, place);
  while (!mFrames.empty()) {
    MessageParser& parser = mFrames.back()->parser;
    if (!parser.isWaiting()) {
      code = leave();
      if (!mFrames.empty()) mFrames.back()->parser.resume(code);
      continue;
    }
    NestedMessage nested = parser.takeNested();
    if (mFrames.size() >= kOpenSources) parser.suspend();
    code = enter(*nested.message, nested.content.release(), parser.childPlace());
    if (voFailed(code)) parser.resume(code);
  }
  return code;
}

// What fails here leaves no frame.
VoErrorCode MessageReading::enter(VoMsgRfc822Message& message, VoMsgResourceLocator* source,
                                  const MessagePlace& place) {
  const VoErrorCode code = message._beginReading(source, place);
  if (voFailed(code)) return code;
  const VoErrorCode entered = guarded([&] {
    std::unique_ptr<Frame> frame(
        new Frame{message, place, MessageParser(message, place, Inside::source(message), mSurvey)});
    mFrames.push_back(std::move(frame));
    return kVoSuccess;
  });
  if (voFailed(entered)) return message._endReading(entered, place);
  mFrames.back()->parser.start();
  return kVoSuccess;
}

VoErrorCode MessageReading::leave() {
  const std::unique_ptr<Frame> frame = std::move(mFrames.back());
  mFrames.pop_back();
  return frame->message._endReading(frame->parser.conclude(), frame->place);
}

}  // namespace vomsg::detail
