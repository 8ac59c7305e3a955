#include "vomsg/charset/convert/VoMsgEUCToSJISJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJapaneseWriters.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgEUCToSJISJpConverter::newStage(Replacement replacement) const {
  return std::make_unique<RewriteStage<EucReader, SjisWriter>>(replacement);
}
