#include "vomsg/charset/convert/VoMsgEUCToUTF8CnConverter.h"

#include "vomsg/charset/convert/VoMsgGbMapping.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgEUCToUTF8CnConverter::newStage(Replacement replacement) const {
  return newGbToUtf8(replacement);
}
