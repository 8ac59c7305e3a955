#include "vomsg/charset/convert/VoMsgSJISToJISJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJapaneseWriters.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgSJISToJISJpConverter::newStage(Replacement replacement) const {
  return std::make_unique<RewriteStage<SjisReader, JisWriter>>(replacement);
}
