#include "vomsg/charset/convert/VoMsgEUCToJISJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJapaneseWriters.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgEUCToJISJpConverter::newStage(Replacement replacement) const {
  return std::make_unique<RewriteStage<EucReader, JisWriter>>(replacement);
}
