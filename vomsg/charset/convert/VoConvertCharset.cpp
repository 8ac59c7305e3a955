#include "vomsg/charset/convert/VoConvertCharset.h"

#include <algorithm>
#include <cstring>

#include "vomsg/charset/convert/VoMsgTextConversion.h"
#include "vomsg/foundation/VoMsgGuard.h"
#include "vomsg/foundation/VoMsgLogLine.h"

using vomsg::detail::Conversion;

static constexpr char kLogSource[] = "VoConvertCharset";

int voConvertCharset(char* out, unsigned int outSize, const char* toCharset, const char* input, const char* fromCharset,
                     VoErrorCode* err) {
  if (!err) return 0;
  const auto failed = [&](VoErrorCode code) {
    voMessageLog(1, kLogSource, "voConvertCharset", __LINE__, "", "The text can not be converted: 0x%08X.", code);
    *err = code;
    return 0;
  };
  if (!out || !toCharset || !input || !fromCharset) return failed(kVoBadArgument);
  std::string result;
  Conversion conversion = Conversion::failed;
  const VoErrorCode walled = vomsg::detail::guarded([&] {
    conversion = vomsg::detail::convertText(result, toCharset, fromCharset, input, err);
    return kVoSuccess;
  });
  if (voFailed(walled)) *err = walled;
  if (conversion == Conversion::missing) return failed(kVoConversionFailed);
  if (voFailed(*err)) failed(*err);
  if (outSize != 0) {
    const std::size_t length = std::min<std::size_t>(result.size(), outSize - 1);
    result.copy(out, length);
    out[length] = '\0';
    out[outSize - 1] = '\0';
  }
  return static_cast<int>(result.size() + 1);
}
