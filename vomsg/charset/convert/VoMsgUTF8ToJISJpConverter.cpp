#include "vomsg/charset/convert/VoMsgUTF8ToJISJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgJapaneseWriters.h"
#include "vomsg/charset/convert/VoMsgJisMapping.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgUTF8ToJISJpConverter::newStage(Replacement replacement) const {
  return std::make_unique<StageChain>(newUtf8ToEuc(replacement),
                                      std::make_unique<RewriteStage<EucReader, JisWriter>>(replacement));
}
