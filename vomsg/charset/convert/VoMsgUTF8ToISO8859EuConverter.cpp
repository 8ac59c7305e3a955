#include "vomsg/charset/convert/VoMsgUTF8ToISO8859EuConverter.h"

#include <array>
#include <new>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"
#include "vomsg/charset/convert/VoUnicodeTable.h"
#include "vomsg/encoding/VoUtf8.h"
#include "vomsg/foundation/VoMsgGuard.h"

namespace {

// Remembers recent look-ups: a text stays within one alphabet, whose letters lie side by side in Unicode.
class RecentCodes {
 public:
  RecentCodes(const VoUnicodeTable* table, signed char enforce, char replaceChar)
      : mpTable(table), mEnforce(enforce), mReplaceChar(static_cast<unsigned char>(replaceChar)) {}

  unsigned char find(unsigned ucs) {
    Entry& entry = mEntries[ucs % mEntries.size()];
    if (entry.ucs != ucs) {
      const unsigned code = voConvertFromUnicode(mpTable, ucs, mEnforce, mReplaceChar);
      entry = {ucs, static_cast<unsigned char>(code)};
    }
    return entry.code;
  }

 private:
  struct Entry {
    unsigned ucs = 0;  // no character has the code 0, so an unused entry is right too
    unsigned char code = 0;
  };
  std::array<Entry, 64> mEntries;
  const VoUnicodeTable* mpTable;
  signed char mEnforce;
  unsigned char mReplaceChar;
};

}  // namespace

VoMsgUTF8ToISO8859EuConverter::VoMsgUTF8ToISO8859EuConverter(const VoUnicodeTable* toTable, signed char enforce,
                                                             char replaceChar)
    : VoMsgCharsetConverter(enforce, replaceChar), mpToTable(toTable) {}

VoMsgUTF8ToISO8859EuConverter::~VoMsgUTF8ToISO8859EuConverter() = default;

VoMsgCharsetConverter* VoMsgUTF8ToISO8859EuConverter::copy(const char* toCharset, const char* fromCharset,
                                                           signed char enforce, char replaceChar) {
  if (!voIsEqualCharsetName(fromCharset, "utf-8")) return nullptr;
  const VoUnicodeTable* to = voGetUnicodeMappingTable(voGetFQNCharsetName(toCharset));
  return to ? new (std::nothrow) VoMsgUTF8ToISO8859EuConverter(to, enforce, replaceChar) : nullptr;
}

VoErrorCode VoMsgUTF8ToISO8859EuConverter::convert(std::string& out, std::string& in) {
  return vomsg::detail::guarded([&] {
    RecentCodes codes(mpToTable, mEnforce, mReplaceChar);
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
      // The string's own NUL ends a sequence that is cut off, so nothing is read past it.
      unsigned ucs = 0;
      at += voUtf8ToUcs2(at, ucs);
      const unsigned char byte = codes.find(ucs);
      if (byte == 0) {
        code = kVoConversionFailed;
        break;
      }
      writer.put(byte);
    }
    writer.flush();
    out = std::move(result);
    return code;
  });
}
