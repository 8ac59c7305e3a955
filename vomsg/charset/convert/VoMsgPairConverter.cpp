#include "vomsg/charset/convert/VoMsgPairConverter.h"

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/foundation/VoMsgGuard.h"

VoErrorCode VoMsgPairConverter::convert(std::string& out, std::string& in) {
  return vomsg::detail::guarded([&] {
    std::string result;
    result.reserve(in.size());
    const VoErrorCode code = transform(vomsg::detail::untilNul(in), {mEnforce == 1, mReplaceChar}, result);
    if (voFailed(code)) result.clear();
    out = std::move(result);
    return code;
  });
}

bool VoMsgPairConverter::isPair(const char* to, const char* wantedTo, const char* from, const char* wantedFrom) {
  return voIsEqualCharsetName(to, wantedTo) && voIsEqualCharsetName(from, wantedFrom);
}
