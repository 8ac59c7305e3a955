#include "vomsg/charset/convert/VoMsgHZToUTF8CnConverter.h"

#include "vomsg/charset/convert/VoMsgChineseText.h"
#include "vomsg/charset/convert/VoMsgGbMapping.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgHZToUTF8CnConverter::newStage(Replacement replacement) const {
  return std::make_unique<StageChain>(std::make_unique<RewriteStage<HzReader, EucWriter>>(replacement),
                                      newGbToUtf8(replacement));
}
