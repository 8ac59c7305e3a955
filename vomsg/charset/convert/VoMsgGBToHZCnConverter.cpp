#include "vomsg/charset/convert/VoMsgGBToHZCnConverter.h"

#include "vomsg/charset/convert/VoMsgChineseText.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgGBToHZCnConverter::newStage(Replacement replacement) const {
  return std::make_unique<RewriteStage<GbReader, HzWriter>>(replacement);
}
