#include "vomsg/charset/convert/VoMsgJISToEUCJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgJISToEUCJpConverter::newStage(Replacement replacement) const {
  return std::make_unique<RewriteStage<JisReader, EucWriter>>(replacement);
}
