#include "vomsg/charset/convert/VoMsgPairConverter.h"

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/foundation/VoMsgGuard.h"

VoErrorCode VoMsgPairConverter::convert(std::string& out, std::string& in) {
  return vomsg::detail::guarded([&] { return convertWhole(*newStage(replacement()), false, out, in); });
}

bool VoMsgPairConverter::isPair(const char* to, const char* wantedTo, const char* from, const char* wantedFrom) {
  return voIsEqualCharsetName(to, wantedTo) && voIsEqualCharsetName(from, wantedFrom);
}
