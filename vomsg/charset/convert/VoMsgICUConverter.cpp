// Text goes through UTF-16 in pieces of some thousand units, so that a conversion needs memory for its result and no
// more. What a caller sees is as if the whole text were decoded first and encoded then: a failure to decode wins over
// a failure to encode, wherever they lie, and characters behind a NUL can still make the conversion fail.
#include "vomsg/charset/convert/VoMsgICUConverter.h"

#include <new>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgIcuHandle.h"
#include "vomsg/charset/convert/VoMsgJisEscapes.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"

namespace {

using vomsg::detail::equalNoCase;
using vomsg::detail::kJisToAscii;
using vomsg::detail::kJisToKanji;

void keepName(char* kept, std::size_t longest, const char* name) {
  kept[vomsg::detail::viewOf(name).copy(kept, longest)] = '\0';
}

}  // namespace

VoMsgICUConverter::VoMsgICUConverter() = default;

VoMsgICUConverter::VoMsgICUConverter(const char* toCharset, const char* fromCharset, signed char enforce,
                                     char replaceChar)
    : VoMsgCharsetConverter(enforce, replaceChar),
      mpFromConverter(vomsg::detail::openIcu(fromCharset)),
      mpToConverter(vomsg::detail::openIcu(toCharset)) {
  if (isOpen()) {
    if (enforce == 1)
      vomsg::detail::substituteInIcu(*mpToConverter, replaceChar);
    else
      vomsg::detail::stopInIcu(*mpToConverter);
  }
  keepName(mToName, kLongestName, toCharset);
  keepName(mFromName, kLongestName, fromCharset);
}

VoMsgICUConverter::~VoMsgICUConverter() = default;

VoMsgCharsetConverter* VoMsgICUConverter::copy(const char* toCharset, const char* fromCharset, signed char enforce,
                                               char replaceChar) {
  const char* to = voGetFQNCharsetName(toCharset);
  const char* from = voGetFQNCharsetName(fromCharset);
  if (!to || !from || equalNoCase(from, "iso-2022-cn")) return nullptr;
  if (std::string_view(to).size() >= kLongestName || std::string_view(from).size() >= kLongestName) return nullptr;
  if (voIsUnicode(to) || voIsUnicode(from)) return nullptr;
  auto* converter = new (std::nothrow) VoMsgICUConverter(to, from, enforce, replaceChar);
  if (converter && !converter->isOpen()) {
    delete converter;
    return nullptr;
  }
  return converter;
}

VoErrorCode VoMsgICUConverter::convert(std::string& out, std::string& in) {
  if (!isOpen()) {
    out.clear();
    return kVoConverterMissing;
  }
  return vomsg::detail::guarded([&] {
    if (equalNoCase(mFromName, mToName)) {
      out = in;
      return kVoSuccess;
    }
    std::string prepared;
    std::string_view bytes = in;
    if (equalNoCase(mFromName, "iso-2022-jp")) {
      prepared = vomsg::detail::dropRedundantJisEscapes(in);
      bytes = prepared;
    } else if (equalNoCase(mFromName, "ucs-2") && equalNoCase(mToName, "utf-8") && in.size() % 2 != 0) {
      prepared = in + '\0';  // whole 16-bit units
      bytes = prepared;
    }
    std::string result;
    const VoErrorCode code = vomsg::detail::transcodeWithIcu(*mpFromConverter, *mpToConverter, bytes, result);
    if (voFailed(code)) {
      out.clear();
      return code;
    }
    // Appended even to text that is back in ASCII: readers of old rely on the last sequence being there.
    if (equalNoCase(mToName, "iso-2022-jp") && equalNoCase(mFromName, "utf-8") &&
        result.find(kJisToKanji) != result.npos)
      result += kJisToAscii;
    out = std::move(result);
    return kVoSuccess;
  });
}
