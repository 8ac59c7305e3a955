#include "vomsg/charset/convert/VoMsgHZToGBCnConverter.h"

#include "vomsg/charset/convert/VoMsgChineseText.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgHZToGBCnConverter::newStage(Replacement replacement) const {
  return std::make_unique<RewriteStage<HzReader, EucWriter>>(replacement);
}
