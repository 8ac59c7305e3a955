#include "vomsg/charset/convert/VoMsgUTF8ToISO8859EuConverter.h"

#include <algorithm>
#include <array>
#include <new>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/charset/convert/VoMsgTextWriters.h"
#include "vomsg/charset/convert/VoUnicodeTable.h"
#include "vomsg/encoding/VoUtf8.h"
#include "vomsg/foundation/VoMsgGuard.h"

namespace {

using namespace vomsg::detail;

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

class FromUtf8Stage final : public TextStage {
 public:
  FromUtf8Stage(const VoUnicodeTable* table, signed char enforce, char replaceChar)
      : mCodes(table, enforce, replaceChar) {}

  VoErrorCode convert(std::string_view piece, bool last, std::string& out) override {
    if (!mRest.empty()) piece = mRest.append(piece);
    BlockWriter writer(&out);
    VoErrorCode code = kVoSuccess;
    auto at = reinterpret_cast<Bytes>(piece.data());
    const auto end = at + piece.size();
    while (at < end) {
      if (*at < 0x80) {
        const std::string_view run = textRun(at, end);
        writer.put(run);
        at += run.size();
        continue;
      }
      unsigned ucs = 0;
      if (end - at >= kLongest) {
        at += voUtf8ToUcs2(at, ucs);
      } else {
        // Near the end there may be a sequence that is cut off; the text's own end is a NUL to the decoder.
        unsigned char tail[kLongest + 1] = {};
        std::copy(at, end, tail);
        if (!last && end - at < (*at < 0xE0 ? 2 : *at < 0xF0 ? 3 : kLongest)) break;
        at += voUtf8ToUcs2(tail, ucs);
      }
      const unsigned char byte = mCodes.find(ucs);
      if (byte == 0) {
        code = kVoConversionFailed;
        break;
      }
      writer.put(byte);
    }
    writer.flush();
    mRest = std::string(viewOf(at, end));
    return code;
  }

 private:
  static constexpr std::ptrdiff_t kLongest = 4;

  RecentCodes mCodes;
  std::string mRest;
};

const VoUnicodeTable* tableFor(const char* toCharset, const char* fromCharset) {
  if (!voIsEqualCharsetName(fromCharset, "utf-8")) return nullptr;
  return voGetUnicodeMappingTable(voGetFQNCharsetName(toCharset));
}

}  // namespace

VoMsgUTF8ToISO8859EuConverter::VoMsgUTF8ToISO8859EuConverter(const VoUnicodeTable* toTable, signed char enforce,
                                                             char replaceChar)
    : VoMsgStagedConverter(enforce, replaceChar), mpToTable(toTable) {}

VoMsgUTF8ToISO8859EuConverter::~VoMsgUTF8ToISO8859EuConverter() = default;

VoMsgCharsetConverter* VoMsgUTF8ToISO8859EuConverter::copy(const char* toCharset, const char* fromCharset,
                                                           signed char enforce, char replaceChar) {
  const VoUnicodeTable* const to = tableFor(toCharset, fromCharset);
  return to ? new (std::nothrow) VoMsgUTF8ToISO8859EuConverter(to, enforce, replaceChar) : nullptr;
}

std::unique_ptr<TextStage> VoMsgUTF8ToISO8859EuConverter::newStageFor(const char* toCharset, const char* fromCharset,
                                                                      Replacement replacement) const {
  const VoUnicodeTable* const to = tableFor(toCharset, fromCharset);
  if (!to) return nullptr;
  return std::make_unique<FromUtf8Stage>(to, replacement.allowed, replacement.byte);
}

VoErrorCode VoMsgUTF8ToISO8859EuConverter::convert(std::string& out, std::string& in) {
  return guarded([&] {
    FromUtf8Stage stage(mpToTable, mEnforce, mReplaceChar);
    return convertWhole(stage, true, out, in);
  });
}
