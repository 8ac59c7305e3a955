#include "vomsg/charset/convert/VoMsgUTF8ToBIG5TwConverter.h"

#include "vomsg/charset/convert/VoMsgBig5Mapping.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgUTF8ToBIG5TwConverter::newStage(Replacement replacement) const {
  return newUtf8ToBig5(replacement);
}
