#include "vomsg/entity/VoMsgTextCharset.h"

#include <cstdlib>
#include <memory>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/detect/VoMsgCharSetAnalysis.h"
#include "vomsg/charset/detect/VoMsgHtmlCharset.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace vomsg::detail {

namespace {

using Origin = VoMsgRfc822Entity::CharsetOrigin;

constexpr char kPlain[] = "text/plain";

std::unique_ptr<VoMsgBufferedReader> readerOf(const VoMsgResourceLocator& content) {
  return std::unique_ptr<VoMsgBufferedReader>(content.getInputStream(VoMsgResourceLocator::dataPart));
}

std::string charsetNamedIn(const VoMsgResourceLocator& html) {
  const auto reader = readerOf(html);
  if (!reader) return {};
  char prologue[kHtmlPrologue];
  return htmlCharset({prologue, reader->read(prologue, sizeof prologue)});
}

// The converters' name for what a detector reports. ICU has the machine's EUC-TW under that name and no other.
const char* converterName(const char* detected) {
  return equalNoCase(detected, "x-euc-tw") ? "EUC-TW" : voGetFQNCharsetName(detected);
}

std::string charsetRecognisedIn(const VoMsgResourceLocator& content, const char* format) {
  const auto reader = readerOf(content);
  char* charset = nullptr;
  VoMsgCharSetAnalysis::getInstance()->analysisText(reader.get(), format, charset);
  const std::unique_ptr<char, decltype(&std::free)> owner(charset, &std::free);
  return charset ? converterName(charset) : "";
}

}  // namespace

TextCharset textCharsetOf(const VoMsgRfc822Entity& entity, const VoMsgResourceLocator* content) {
  const char* const declared = entity.getCharset();
  if (declared && *declared) return {declared, Origin::declared};
  if (content) {
    const char* const declaredType = entity.getContentType();
    const char* type = declaredType && *declaredType ? declaredType : kPlain;
    if (equalNoCase(type, "text/html")) {
      std::string named = charsetNamedIn(*content);
      if (!named.empty()) return {std::move(named), Origin::declared};
      type = kPlain;
    }
    std::string recognised = charsetRecognisedIn(*content, type);
    if (!recognised.empty()) return {std::move(recognised), Origin::detected};
  }
  return {"us-ascii", Origin::assumed};
}

}  // namespace vomsg::detail
