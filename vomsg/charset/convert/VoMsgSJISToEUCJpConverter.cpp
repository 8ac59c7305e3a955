#include "vomsg/charset/convert/VoMsgSJISToEUCJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgSJISToEUCJpConverter::newStage(Replacement replacement) const {
  return std::make_unique<RewriteStage<SjisReader, EucWriter>>(replacement);
}
