#include "vomsg/charset/convert/VoMsgConverterFactory.h"

#include <type_traits>
#include <utility>

#include "vomsg/charset/convert/VoMsgBIG5ToUTF8TwConverter.h"
#include "vomsg/charset/convert/VoMsgCharsetId.h"
#include "vomsg/charset/convert/VoMsgEUCToJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgEUCToSJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgEUCToUTF8CnConverter.h"
#include "vomsg/charset/convert/VoMsgGBToHZCnConverter.h"
#include "vomsg/charset/convert/VoMsgHZToGBCnConverter.h"
#include "vomsg/charset/convert/VoMsgHZToUTF8CnConverter.h"
#include "vomsg/charset/convert/VoMsgICUConverter.h"
#include "vomsg/charset/convert/VoMsgIcuHandle.h"
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

using vomsg::detail::CharsetId;

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
  add<VoMsgEUCToUTF8CnConverter>();
  add<VoMsgUTF8ToEUCCnConverter>();
  add<VoMsgGBToHZCnConverter>();
  add<VoMsgHZToGBCnConverter>();
  add<VoMsgHZToUTF8CnConverter>();
  add<VoMsgBIG5ToUTF8TwConverter>();
  add<VoMsgUTF8ToBIG5TwConverter>();
  add<VoMsgToISO8859EuConverter>();
  add<VoMsgToUTF8EuConverter>();
  add<VoMsgUTF8ToISO8859EuConverter>();
  add<VoMsgJISToEUCJpConverter>();
  add<VoMsgEUCToJISJpConverter>();
  add<VoMsgJISToSJISJpConverter>();
  add<VoMsgSJISToJISJpConverter>();
  add<VoMsgSJISToEUCJpConverter>();
  add<VoMsgEUCToSJISJpConverter>();
  add<VoMsgJISToASCIIJpConverter>();
  add<VoMsgICUConverter>();
}

VoMsgConverterFactory::~VoMsgConverterFactory() {
  for (Prototype& prototype : mPrototypes) prototype.converter.reset();
  vomsg::detail::closeIdleIcu();
}

template <class Converter>
void VoMsgConverterFactory::add() {
  Prototype prototype{std::make_unique<Converter>(), CharsetId::kUnknown, CharsetId::kUnknown};
  if constexpr (std::is_base_of_v<VoMsgPairConverter, Converter>) {
    prototype.to = vomsg::detail::charsetId(Converter::kTo).record;
    prototype.from = vomsg::detail::charsetId(Converter::kFrom).record;
  }
  mPrototypes.push_back(std::move(prototype));
}

// Asks those that may handle the pair, in their order, until one gives something.
template <class Ask>
auto VoMsgConverterFactory::firstOf(const char* toCharset, const char* fromCharset, Ask ask) const
    -> decltype(ask(std::declval<VoMsgStagedConverter&>(), toCharset, fromCharset)) {
  const CharsetId to = vomsg::detail::charsetId(toCharset);
  const CharsetId from = vomsg::detail::charsetId(fromCharset);
  if (!to.name || !from.name) return nullptr;
  for (const Prototype& prototype : mPrototypes) {
    const bool isPair = prototype.to != CharsetId::kUnknown;
    if (isPair && (prototype.to != to.record || prototype.from != from.record)) continue;
    if (auto found = ask(*prototype.converter, to.name, from.name)) return found;
  }
  return nullptr;
}

VoMsgCharsetConverter* VoMsgConverterFactory::createConverter(const char* toCharset, const char* fromCharset,
                                                              signed char enforce, char replaceChar) {
  return vomsg::detail::guardedOr<VoMsgCharsetConverter*>(nullptr, [&] {
    return firstOf(toCharset, fromCharset, [&](VoMsgStagedConverter& prototype, const char* to, const char* from) {
      return prototype.copy(to, from, enforce, replaceChar);
    });
  });
}

std::unique_ptr<vomsg::detail::TextStage> VoMsgConverterFactory::newStage(const char* toCharset,
                                                                          const char* fromCharset,
                                                                          vomsg::detail::Replacement replacement) {
  return firstOf(toCharset, fromCharset, [&](const VoMsgStagedConverter& prototype, const char* to, const char* from) {
    return prototype.newStageFor(to, from, replacement);
  });
}

VoErrorCode VoMsgConverterFactory::destoryConverter(VoMsgCharsetConverter* converter) {
  delete converter;
  return kVoSuccess;
}
