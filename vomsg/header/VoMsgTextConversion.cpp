#include "vomsg/header/VoMsgTextConversion.h"

#include <memory>

#include "vomsg/charset/convert/VoMsgConverterFactory.h"

namespace vomsg::detail {

namespace {

struct ConverterReturner {
  void operator()(VoMsgCharsetConverter* converter) const {
    VoMsgConverterFactory::getInstance()->destoryConverter(converter);
  }
};

}  // namespace

Conversion convertText(std::string& out, const char* toCharset, const char* fromCharset, std::string_view text) {
  const std::unique_ptr<VoMsgCharsetConverter, ConverterReturner> converter(
      VoMsgConverterFactory::getInstance()->createConverter(toCharset, fromCharset, 1, '?'));
  if (!converter) return Conversion::missing;
  std::string source(text);
  out.clear();
  return voFailed(converter->convert(out, source)) ? Conversion::failed : Conversion::done;
}

}  // namespace vomsg::detail
