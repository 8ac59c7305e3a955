#include "vomsg/charset/convert/VoMsgToUTF8EuConverter.h"

#include <new>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/charset/convert/VoUnicodeTable.h"
#include "vomsg/encoding/VoUtf8.h"
#include "vomsg/foundation/VoMsgGuard.h"

VoMsgToUTF8EuConverter::VoMsgToUTF8EuConverter(const VoUnicodeTable* fromTable, signed char enforce, char replaceChar)
    : VoMsgCharsetConverter(enforce, replaceChar), mpFromTable(fromTable) {}

VoMsgToUTF8EuConverter::~VoMsgToUTF8EuConverter() = default;

VoMsgCharsetConverter* VoMsgToUTF8EuConverter::copy(const char* toCharset, const char* fromCharset, signed char enforce,
                                                    char replaceChar) {
  if (!voIsEqualCharsetName(toCharset, "utf-8")) return nullptr;
  const VoUnicodeTable* from = voGetUnicodeMappingTable(voGetFQNCharsetName(fromCharset));
  return from ? new (std::nothrow) VoMsgToUTF8EuConverter(from, enforce, replaceChar) : nullptr;
}

VoErrorCode VoMsgToUTF8EuConverter::convert(std::string& out, std::string& in) {
  return vomsg::detail::guarded([&] {
    const auto replacement = static_cast<unsigned char>(mReplaceChar);
    std::string result;
    result.reserve(in.size());
    VoErrorCode code = kVoSuccess;
    for (std::string_view rest = in;; rest.remove_prefix(1)) {
      const std::size_t plain = vomsg::detail::asciiRun(rest);
      result.append(rest.substr(0, plain));
      rest.remove_prefix(plain);
      if (rest.empty() || rest[0] == '\0') break;
      const unsigned ucs = mpFromTable->getCode(static_cast<unsigned char>(rest[0]), mEnforce, replacement);
      if (ucs == 0) {
        code = kVoConversionFailed;
        break;
      }
      unsigned char bytes[4];
      const int length = voUcs2ToUtf8(ucs, bytes);
      result.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
    }
    out = std::move(result);
    return code;
  });
}
