#include "vomsg/charset/convert/VoMsgUTF8ToEUCCnConverter.h"

#include "vomsg/charset/convert/VoMsgGbMapping.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgUTF8ToEUCCnConverter::newStage(Replacement replacement) const {
  return newUtf8ToGb(replacement);
}
