#include "vomsg/charset/convert/VoMsgToISO8859EuConverter.h"

#include <array>
#include <new>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/charset/convert/VoUnicodeTable.h"
#include "vomsg/foundation/VoMsgGuard.h"

VoMsgToISO8859EuConverter::VoMsgToISO8859EuConverter(const VoUnicodeTable* toTable, const VoUnicodeTable* fromTable,
                                                     signed char enforce, char replaceChar)
    : VoMsgCharsetConverter(enforce, replaceChar), mpToTable(toTable), mpFromTable(fromTable) {}

VoMsgToISO8859EuConverter::~VoMsgToISO8859EuConverter() = default;

VoMsgCharsetConverter* VoMsgToISO8859EuConverter::copy(const char* toCharset, const char* fromCharset,
                                                       signed char enforce, char replaceChar) {
  const VoUnicodeTable* to = voGetUnicodeMappingTable(voGetFQNCharsetName(toCharset));
  const VoUnicodeTable* from = voGetUnicodeMappingTable(voGetFQNCharsetName(fromCharset));
  if (!to || !from) return nullptr;
  return new (std::nothrow) VoMsgToISO8859EuConverter(to, from, enforce, replaceChar);
}

VoErrorCode VoMsgToISO8859EuConverter::convert(std::string& out, std::string& in) {
  return vomsg::detail::guarded([&] {
    const auto replacement = static_cast<unsigned char>(mReplaceChar);
    constexpr short kUnknown = -1;
    std::array<short, 256> codes;  // what each high byte became, looked up once
    codes.fill(kUnknown);
    std::string result;
    result.reserve(in.size());
    VoErrorCode code = kVoSuccess;
    for (std::string_view rest = vomsg::detail::untilNul(in);; rest.remove_prefix(1)) {
      const std::size_t plain = vomsg::detail::asciiRun(rest);
      result.append(rest.substr(0, plain));
      rest.remove_prefix(plain);
      if (rest.empty()) break;
      const auto byte = static_cast<unsigned char>(rest[0]);
      if (codes[byte] == kUnknown) {
        const unsigned ucs = mpFromTable->getCode(byte, mEnforce, replacement);
        codes[byte] = static_cast<short>(ucs ? voConvertFromUnicode(mpToTable, ucs, mEnforce, replacement) : 0);
      }
      if (codes[byte] == 0) {
        code = kVoConversionFailed;
        break;
      }
      result.push_back(static_cast<char>(codes[byte]));
    }
    out = std::move(result);
    return code;
  });
}
