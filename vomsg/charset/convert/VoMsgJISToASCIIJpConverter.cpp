#include "vomsg/charset/convert/VoMsgJISToASCIIJpConverter.h"

#include "vomsg/charset/convert/VoMsgJapaneseReaders.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"

using namespace vomsg::detail;

std::unique_ptr<TextStage> VoMsgJISToASCIIJpConverter::newStage(Replacement replacement) const {
  return std::make_unique<RewriteStage<JisReader, AsciiWriter>>(replacement);
}
