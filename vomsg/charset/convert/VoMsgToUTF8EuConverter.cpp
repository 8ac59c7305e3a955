#include "vomsg/charset/convert/VoMsgToUTF8EuConverter.h"

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

// What a high byte becomes, looked up when it is first met.
struct Sequence {
  unsigned char length = 0;
  std::array<unsigned char, 4> bytes{};
};

class ToUtf8Stage final : public TextStage {
 public:
  // `enforce` as the table's look-up takes it.
  ToUtf8Stage(const VoUnicodeTable* table, signed char enforce, char replaceChar)
      : mpTable(table), mEnforce(enforce), mReplaceChar(static_cast<unsigned char>(replaceChar)) {}

  VoErrorCode convert(std::string_view piece, bool, std::string& out) override {
    BlockWriter writer(&out);
    VoErrorCode code = kVoSuccess;
    auto at = reinterpret_cast<Bytes>(piece.data());
    for (const auto end = at + piece.size(); at < end;) {
      if (*at < 0x80) {
        const std::string_view run = textRun(at, end);
        writer.put(run);
        at += run.size();
        continue;
      }
      Sequence& sequence = mSequences[*at - 0x80u];
      if (sequence.length == 0) {
        const unsigned ucs = mpTable->getCode(*at, mEnforce, mReplaceChar);
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
    return code;
  }

 private:
  const VoUnicodeTable* const mpTable;
  const signed char mEnforce;
  const unsigned char mReplaceChar;
  std::array<Sequence, 128> mSequences;
};

const VoUnicodeTable* tableFor(const char* toCharset, const char* fromCharset) {
  if (!voIsEqualCharsetName(toCharset, "utf-8")) return nullptr;
  return voGetUnicodeMappingTable(voGetFQNCharsetName(fromCharset));
}

}  // namespace

VoMsgToUTF8EuConverter::VoMsgToUTF8EuConverter(const VoUnicodeTable* fromTable, signed char enforce, char replaceChar)
    : VoMsgStagedConverter(enforce, replaceChar), mpFromTable(fromTable) {}

VoMsgToUTF8EuConverter::~VoMsgToUTF8EuConverter() = default;

VoMsgCharsetConverter* VoMsgToUTF8EuConverter::copy(const char* toCharset, const char* fromCharset, signed char enforce,
                                                    char replaceChar) {
  const VoUnicodeTable* const from = tableFor(toCharset, fromCharset);
  return from ? new (std::nothrow) VoMsgToUTF8EuConverter(from, enforce, replaceChar) : nullptr;
}

std::unique_ptr<TextStage> VoMsgToUTF8EuConverter::newStageFor(const char* toCharset, const char* fromCharset,
                                                               Replacement replacement) const {
  const VoUnicodeTable* const from = tableFor(toCharset, fromCharset);
  if (!from) return nullptr;
  return std::make_unique<ToUtf8Stage>(from, replacement.allowed, replacement.byte);
}

VoErrorCode VoMsgToUTF8EuConverter::convert(std::string& out, std::string& in) {
  return guarded([&] {
    ToUtf8Stage stage(mpFromTable, mEnforce, mReplaceChar);
    return convertWhole(stage, true, out, in);
  });
}
