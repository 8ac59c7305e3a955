#include "vomsg/charset/convert/VoMsgPairConverter.h"

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/foundation/VoMsgGuard.h"

VoErrorCode VoMsgPairConverter::convert(std::string& out, std::string& in) {
  return vomsg::detail::guarded([&] {
    std::string result;
    result.reserve(in.size());
    const std::string_view text = std::string_view(in).substr(0, in.find('\0'));
    const VoErrorCode code = transform(text, {mEnforce == 1, mReplaceChar}, result);
    if (voFailed(code)) result.clear();
    out = std::move(result);
    return code;
  });
}

bool VoMsgPairConverter::isPair(const char* to, const char* wantedTo, const char* from, const char* wantedFrom) {
  return voIsEqualCharsetName(to, wantedTo) && voIsEqualCharsetName(from, wantedFrom);
}
