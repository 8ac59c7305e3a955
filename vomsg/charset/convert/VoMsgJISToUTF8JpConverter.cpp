#include "vomsg/charset/convert/VoMsgJISToUTF8JpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJisMapping.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgJISToUTF8JpConverter::newStage(Replacement replacement) const {
  return std::make_unique<StageChain>(std::make_unique<RewriteStage<JisReader, EucWriter>>(replacement),
                                      newEucToUtf8(replacement));
}
