#include "vomsg/charset/convert/VoMsgConverterFactory.h"

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgICUConverter.h"
#include "vomsg/charset/convert/VoMsgToISO8859EuConverter.h"
#include "vomsg/charset/convert/VoMsgToUTF8EuConverter.h"
#include "vomsg/charset/convert/VoMsgUTF8ToISO8859EuConverter.h"
#include "vomsg/foundation/VoMsgGuard.h"

// Constructed on first use, because other static objects may convert while the library is loading, and touched below,
// so that loading builds it in any case and no conversion pays for it.
VoMsgConverterFactory* VoMsgConverterFactory::getInstance() {
  static VoMsgConverterFactory factory;
  return &factory;
}

namespace {
[[maybe_unused]] const VoMsgConverterFactory* const kBuiltAtLoad = VoMsgConverterFactory::getInstance();
}  // namespace

// The order is a precedence: the first class that accepts a pair gets it, and ICU gets the rest.
VoMsgConverterFactory::VoMsgConverterFactory() {
  mPrototypes.push_back(std::make_unique<VoMsgToISO8859EuConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgToUTF8EuConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgUTF8ToISO8859EuConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgICUConverter>());
}

VoMsgConverterFactory::~VoMsgConverterFactory() {
  for (auto& prototype : mPrototypes) prototype.reset();
}

VoMsgCharsetConverter* VoMsgConverterFactory::createConverter(const char* toCharset, const char* fromCharset,
                                                              signed char enforce, char replaceChar) {
  const char* to = voGetFQNCharsetName(toCharset);
  const char* from = voGetFQNCharsetName(fromCharset);
  if (!to || !from) return nullptr;
  return vomsg::detail::guardedOr<VoMsgCharsetConverter*>(nullptr, [&]() -> VoMsgCharsetConverter* {
    for (const auto& prototype : mPrototypes)
      if (VoMsgCharsetConverter* converter = prototype->copy(to, from, enforce, replaceChar)) return converter;
    return nullptr;
  });
}

VoErrorCode VoMsgConverterFactory::destoryConverter(VoMsgCharsetConverter* converter) {
  delete converter;
  return kVoSuccess;
}
