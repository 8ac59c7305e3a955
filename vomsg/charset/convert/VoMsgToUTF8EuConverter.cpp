#include "vomsg/charset/convert/VoMsgToUTF8EuConverter.h"

#include <array>
#include <new>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"
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

namespace {

// What a high byte becomes, looked up when it is first met.
struct Sequence {
  unsigned char length = 0;
  std::array<unsigned char, 4> bytes{};
};

}  // namespace

VoErrorCode VoMsgToUTF8EuConverter::convert(std::string& out, std::string& in) {
  return vomsg::detail::guarded([&] {
    const auto replacement = static_cast<unsigned char>(mReplaceChar);
    std::array<Sequence, 128> sequences;
    std::string result;
    result.reserve(in.size());
    vomsg::detail::BlockWriter writer(result);
    VoErrorCode code = kVoSuccess;
    const std::string_view text = vomsg::detail::untilNul(in);
    auto at = reinterpret_cast<vomsg::detail::Bytes>(text.data());
    for (const auto end = at + text.size(); at < end;) {
      if (*at < 0x80) {
        const std::string_view run = vomsg::detail::textRun(at, end);
        writer.put(run);
        at += run.size();
        continue;
      }
      Sequence& sequence = sequences[*at - 0x80u];
      if (sequence.length == 0) {
        const unsigned ucs = mpFromTable->getCode(*at, mEnforce, replacement);
        if (ucs == 0) {
          code = kVoConversionFailed;
          break;
        }
        sequence.length = static_cast<unsigned char>(voUcs2ToUtf8(ucs, sequence.bytes.data()));
      }
      writer.put(sequence.bytes, sequence.length);
      ++at;
    }
    writer.flush();
    out = std::move(result);
    return code;
  });
}
