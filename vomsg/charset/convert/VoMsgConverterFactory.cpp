#include "vomsg/charset/convert/VoMsgConverterFactory.h"

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgBIG5ToUTF8TwConverter.h"
#include "vomsg/charset/convert/VoMsgEUCToJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgEUCToSJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgEUCToUTF8CnConverter.h"
#include "vomsg/charset/convert/VoMsgGBToHZCnConverter.h"
#include "vomsg/charset/convert/VoMsgHZToGBCnConverter.h"
#include "vomsg/charset/convert/VoMsgHZToUTF8CnConverter.h"
#include "vomsg/charset/convert/VoMsgICUConverter.h"
#include "vomsg/charset/convert/VoMsgJISToASCIIJpConverter.h"
#include "vomsg/charset/convert/VoMsgJISToEUCJpConverter.h"
#include "vomsg/charset/convert/VoMsgJISToSJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgSJISToEUCJpConverter.h"
#include "vomsg/charset/convert/VoMsgSJISToJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgToISO8859EuConverter.h"
#include "vomsg/charset/convert/VoMsgToUTF8EuConverter.h"
#include "vomsg/charset/convert/VoMsgUTF8ToBIG5TwConverter.h"
#include "vomsg/charset/convert/VoMsgUTF8ToEUCCnConverter.h"
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
  mPrototypes.push_back(std::make_unique<VoMsgEUCToUTF8CnConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgUTF8ToEUCCnConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgGBToHZCnConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgHZToGBCnConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgHZToUTF8CnConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgBIG5ToUTF8TwConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgUTF8ToBIG5TwConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgToISO8859EuConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgToUTF8EuConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgUTF8ToISO8859EuConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgJISToEUCJpConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgEUCToJISJpConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgJISToSJISJpConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgSJISToJISJpConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgSJISToEUCJpConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgEUCToSJISJpConverter>());
  mPrototypes.push_back(std::make_unique<VoMsgJISToASCIIJpConverter>());
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
