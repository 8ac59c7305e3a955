// Reads a message and the messages nested in it, each with a parser of its own, in a loop: a parser that comes to a
// nested message waits until that one was read.
#pragma once

#include <memory>
#include <vector>

#include "vomsg/entity/VoMsgMessageParser.h"
#include "vomsg/entity/VoMsgNestedContent.h"
#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/header/VoMsgHeaderSurvey.h"

class VoMsgResourceLocator;
class VoMsgRfc822Message;

namespace vomsg::detail {

class MessageReading {
 public:
  // Codes and ownership as VoMsgRfc822Message::readFrom.
  VoErrorCode run(VoMsgRfc822Message& root, VoMsgResourceLocator* source, const MessagePlace& place);

 private:
  // A message that is being read.
  struct Frame {
    VoMsgRfc822Message& message;
    MessagePlace place;
    MessageParser parser;
  };

  VoErrorCode enter(VoMsgRfc822Message& message, VoMsgResourceLocator* source, const MessagePlace& place);
  VoErrorCode leave();

  HeaderSurvey mSurvey;  // one for all: no parser needs it while it waits
  std::vector<std::unique_ptr<Frame>> mFrames;
};

}  // namespace vomsg::detail
