#include "vomsg/charset/convert/VoMsgJISToSJISJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJapaneseWriters.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgJISToSJISJpConverter::newStage(Replacement replacement) const {
  return std::make_unique<RewriteStage<JisReader, SjisWriter>>(replacement);
}
