// What ICU makes of a pair of charsets, with the habits of some of them: redundant escape sequences of ISO-2022-JP are
// dropped before it is read and one is added where it is written, and UCS-2 is filled up to whole units. What a caller
// sees is as if the whole text were decoded first and encoded then: a failure to decode wins over a failure to encode,
// wherever they lie, and characters behind a NUL can still make the conversion fail.
#include "vomsg/charset/convert/VoMsgICUConverter.h"

#include <new>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgIcuStage.h"
#include "vomsg/charset/convert/VoMsgJisEscapes.h"
#include "vomsg/foundation/VoMsgAscii.h"
#include "vomsg/foundation/VoMsgGuard.h"

namespace {

using namespace vomsg::detail;

void keepName(char* kept, std::size_t longest, const char* name) { kept[viewOf(name).copy(kept, longest)] = '\0'; }

IcuHandle openTarget(const char* name, Replacement replacement) {
  return openIcu(name, {IcuSetup::kDefault, icuRuleOf(replacement)});
}

// A pair that ICU may be asked for. UTF-16 and UTF-32 are no charsets for mail text.
bool isForIcu(const char* to, const char* from, std::size_t longestName) {
  return std::string_view(to).size() < longestName && std::string_view(from).size() < longestName &&
         !equalNoCase(from, "iso-2022-cn") && !voIsUnicode(to) && !voIsUnicode(from);
}

// Both converters are borrowed.
class PairOfIcu {
 public:
  PairOfIcu(const char* to, const char* from, IcuConverter& encoder, IcuConverter& decoder)
      : mIsSame(equalNoCase(from, to)),
        mIsFromJis(equalNoCase(from, "iso-2022-jp")),
        mIsFromUcs2(equalNoCase(from, "ucs-2") && equalNoCase(to, "utf-8")),
        mIsUtf8ToJis(equalNoCase(to, "iso-2022-jp") && equalNoCase(from, "utf-8")),
        mTranscoder(decoder, encoder) {}

  VoErrorCode convert(std::string_view piece, bool last, std::string& out) {
    if (mIsSame) {
      out.append(piece);
      return kVoSuccess;
    }
    if (mIsFromJis) return convertJis(piece, last, out);
    if (mIsFromUcs2) return convertUcs2(piece, last, out);
    const std::size_t before = out.size();
    const VoErrorCode code = mTranscoder.convert(piece, last, out);
    if (mIsUtf8ToJis && !voFailed(code)) closeJis(std::string_view(out).substr(before), last, out);
    return code;
  }

 private:
  // An escape sequence is redundant when another one follows at once, so the last bytes wait for what comes.
  VoErrorCode convertJis(std::string_view piece, bool last, std::string& out) {
    mRest.append(piece);
    std::size_t known = mRest.size();
    if (!last) {
      constexpr std::size_t kUndecided = 2 * kJisEscapeLength - 1;
      const std::size_t from = mRest.size() - std::min(mRest.size(), kUndecided);
      known = std::min(mRest.find('\x1B', from), known);
    }
    const std::string prepared = dropRedundantJisEscapes(std::string_view(mRest).substr(0, known));
    mRest.erase(0, known);
    return mTranscoder.convert(prepared, last, out);
  }

  VoErrorCode convertUcs2(std::string_view piece, bool last, std::string& out) {
    mIsOdd = mIsOdd != (piece.size() % 2 != 0);
    if (!last || !mIsOdd) return mTranscoder.convert(piece, last, out);
    mIsOdd = false;
    const VoErrorCode code = mTranscoder.convert(piece, false, out);
    return voFailed(code) ? code : mTranscoder.convert({"\0", 1}, true, out);
  }

  // Appended even to text that is back in ASCII: readers of old rely on the last sequence being there.
  void closeJis(std::string_view written, bool last, std::string& out) {
    mRest.append(written);  // the end of the last piece may hold the start of a sequence
    mHasKanji = mHasKanji || mRest.find(kJisToKanji) != mRest.npos;
    mRest.erase(0, mRest.size() - std::min(mRest.size(), kJisEscapeLength - 1));
    if (!last) return;
    if (mHasKanji) out += kJisToAscii;
    mHasKanji = false;
    mRest.clear();
  }

  const bool mIsSame, mIsFromJis, mIsFromUcs2, mIsUtf8ToJis;
  bool mIsOdd = false;
  bool mHasKanji = false;
  std::string mRest;
  IcuTranscoder mTranscoder;
};

class PairStage final : public TextStage {
 public:
  PairStage(const char* to, const char* from, IcuHandle encoder, IcuHandle decoder)
      : mEncoder(std::move(encoder)), mDecoder(std::move(decoder)), mPair(to, from, *mEncoder, *mDecoder) {}
  VoErrorCode convert(std::string_view piece, bool last, std::string& out) override {
    return mPair.convert(piece, last, out);
  }

 private:
  const IcuHandle mEncoder;
  const IcuHandle mDecoder;
  PairOfIcu mPair;
};

}  // namespace

VoMsgICUConverter::VoMsgICUConverter() = default;

VoMsgICUConverter::VoMsgICUConverter(const char* toCharset, const char* fromCharset, signed char enforce,
                                     char replaceChar)
    : VoMsgStagedConverter(enforce, replaceChar),
      mpFromConverter(openIcu(fromCharset)),
      mpToConverter(openTarget(toCharset, replacement())) {
  keepName(mToName, kLongestName, toCharset);
  keepName(mFromName, kLongestName, fromCharset);
}

VoMsgICUConverter::~VoMsgICUConverter() = default;

VoMsgCharsetConverter* VoMsgICUConverter::copy(const char* toCharset, const char* fromCharset, signed char enforce,
                                               char replaceChar) {
  const char* to = voGetFQNCharsetName(toCharset);
  const char* from = voGetFQNCharsetName(fromCharset);
  if (!to || !from || !isForIcu(to, from, kLongestName)) return nullptr;
  auto* converter = new (std::nothrow) VoMsgICUConverter(to, from, enforce, replaceChar);
  if (converter && !converter->isOpen()) {
    delete converter;
    return nullptr;
  }
  return converter;
}

std::unique_ptr<TextStage> VoMsgICUConverter::newStageFor(const char* toCharset, const char* fromCharset,
                                                          Replacement replacement) const {
  if (!isForIcu(toCharset, fromCharset, kLongestName)) return nullptr;
  IcuHandle decoder = openIcu(fromCharset);
  IcuHandle encoder = decoder ? openTarget(toCharset, replacement) : nullptr;
  if (!encoder) return nullptr;
  return std::make_unique<PairStage>(toCharset, fromCharset, std::move(encoder), std::move(decoder));
}

VoErrorCode VoMsgICUConverter::convert(std::string& out, std::string& in) {
  if (!isOpen()) {
    out.clear();
    return kVoConverterMissing;
  }
  return guarded([&] {
    if (equalNoCase(mFromName, mToName)) {
      out = in;
      return kVoSuccess;
    }
    PairOfIcu pair(mToName, mFromName, *mpToConverter, *mpFromConverter);
    std::string result;
    result.reserve(in.size());
    const VoErrorCode code = pair.convert(in, true, result);
    if (voFailed(code)) result.clear();
    out = std::move(result);
    return code;
  });
}
