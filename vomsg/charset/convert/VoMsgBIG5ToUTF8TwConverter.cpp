#include "vomsg/charset/convert/VoMsgBIG5ToUTF8TwConverter.h"

#include "vomsg/charset/convert/VoMsgBig5Mapping.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgBIG5ToUTF8TwConverter::newStage(Replacement replacement) const {
  return newBig5ToUtf8(replacement);
}
