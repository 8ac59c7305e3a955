#include "vomsg/charset/convert/VoMsgToISO8859EuConverter.h"

#include <array>
#include <new>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/charset/convert/VoUnicodeTable.h"
#include "vomsg/foundation/VoMsgGuard.h"

namespace {

using namespace vomsg::detail;

class TableStage final : public TextStage {
 public:
  TableStage(const VoUnicodeTable* to, const VoUnicodeTable* from, signed char enforce, char replaceChar)
      : mpTo(to), mpFrom(from), mEnforce(enforce), mReplaceChar(static_cast<unsigned char>(replaceChar)) {
    mCodes.fill(kUnknown);
  }

  VoErrorCode convert(std::string_view rest, bool, std::string& out) override {
    for (;; rest.remove_prefix(1)) {
      const std::size_t plain = asciiRun(rest);
      out.append(rest.substr(0, plain));
      rest.remove_prefix(plain);
      if (rest.empty()) return kVoSuccess;
      const auto byte = static_cast<unsigned char>(rest[0]);
      if (mCodes[byte] == kUnknown) {
        const unsigned ucs = mpFrom->getCode(byte, mEnforce, mReplaceChar);
        mCodes[byte] = static_cast<short>(ucs ? voConvertFromUnicode(mpTo, ucs, mEnforce, mReplaceChar) : 0);
      }
      if (mCodes[byte] == 0) return kVoConversionFailed;
      out.push_back(static_cast<char>(mCodes[byte]));
    }
  }

 private:
  static constexpr short kUnknown = -1;

  const VoUnicodeTable* const mpTo;
  const VoUnicodeTable* const mpFrom;
  const signed char mEnforce;
  const unsigned char mReplaceChar;
  std::array<short, 256> mCodes;  // what each high byte became, looked up once
};

}  // namespace

VoMsgToISO8859EuConverter::VoMsgToISO8859EuConverter(const VoUnicodeTable* toTable, const VoUnicodeTable* fromTable,
                                                     signed char enforce, char replaceChar)
    : VoMsgStagedConverter(enforce, replaceChar), mpToTable(toTable), mpFromTable(fromTable) {}

VoMsgToISO8859EuConverter::~VoMsgToISO8859EuConverter() = default;

VoMsgCharsetConverter* VoMsgToISO8859EuConverter::copy(const char* toCharset, const char* fromCharset,
                                                       signed char enforce, char replaceChar) {
  const VoUnicodeTable* to = voGetUnicodeMappingTable(voGetFQNCharsetName(toCharset));
  const VoUnicodeTable* from = voGetUnicodeMappingTable(voGetFQNCharsetName(fromCharset));
  if (!to || !from) return nullptr;
  return new (std::nothrow) VoMsgToISO8859EuConverter(to, from, enforce, replaceChar);
}

std::unique_ptr<TextStage> VoMsgToISO8859EuConverter::newStageFor(const char* toCharset, const char* fromCharset,
                                                                  Replacement replacement) const {
  const VoUnicodeTable* const to = voGetUnicodeMappingTable(voGetFQNCharsetName(toCharset));
  const VoUnicodeTable* const from = voGetUnicodeMappingTable(voGetFQNCharsetName(fromCharset));
  if (!to || !from) return nullptr;
  return std::make_unique<TableStage>(to, from, replacement.allowed, replacement.byte);
}

VoErrorCode VoMsgToISO8859EuConverter::convert(std::string& out, std::string& in) {
  return guarded([&] {
    TableStage stage(mpToTable, mpFromTable, mEnforce, mReplaceChar);
    return convertWhole(stage, true, out, in);
  });
}
