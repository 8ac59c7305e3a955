#include "vomsg/charset/convert/VoConvertCharset.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "vomsg/charset/convert/VoMsgConverterFactory.h"
#include "vomsg/foundation/VoMsgGuard.h"

int voConvertCharset(char* out, unsigned int outSize, const char* toCharset, const char* input, const char* fromCharset,
                     VoErrorCode* err) {
  if (!err) return 0;
  if (!out || !toCharset || !input || !fromCharset) {
    *err = kVoBadArgument;
    return 0;
  }
  const std::unique_ptr<VoMsgCharsetConverter> converter(
      VoMsgConverterFactory::getInstance()->createConverter(toCharset, fromCharset, 1, '?'));
  if (!converter) {
    *err = kVoConversionFailed;
    return 0;
  }
  std::string result;
  *err = vomsg::detail::guarded([&] {
    std::string text = input;
    return converter->convert(result, text);
  });
  if (outSize != 0) {
    const std::size_t length = std::min<std::size_t>(result.size(), outSize - 1);
    result.copy(out, length);
    out[length] = '\0';
    out[outSize - 1] = '\0';
  }
  return static_cast<int>(result.size() + 1);
}
