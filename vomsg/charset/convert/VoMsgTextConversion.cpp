#include "vomsg/charset/convert/VoMsgTextConversion.h"

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoMsgAsciiRun.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"
#include "vomsg/foundation/VoMsgAscii.h"

namespace vomsg::detail {

WideReader::WideReader(std::string_view charset)
    : mWidth(charset.find("32") == charset.npos ? 2 : 4), mIsLittleEndian(endsWithNoCase(charset, "le")) {}

// False: more has to come before it is known whether there is one.
bool WideReader::dropMark(bool last) {
  using namespace std::string_view_literals;
  if (mRest.size() < mWidth && !last) return false;
  mIsAtStart = false;
  const std::string_view bigMark = mWidth == 2 ? "\xFE\xFF"sv : "\0\0\xFE\xFF"sv;
  const std::string_view littleMark = mWidth == 2 ? "\xFF\xFE"sv : "\xFF\xFE\0\0"sv;
  if (mRest.starts_with(bigMark) || mRest.starts_with(littleMark)) {
    mIsLittleEndian = mRest.starts_with(littleMark);
    mRest.erase(0, mWidth);
  }
  return true;
}

VoErrorCode WideReader::convert(std::string_view piece, bool last, std::string& utf8) {
  if (mIsAtStart || !mRest.empty()) piece = mRest.append(piece);
  if (mIsAtStart) {
    if (!dropMark(last)) return kVoSuccess;
    piece = mRest;
  }
  const auto append = [&](char32_t character) { appendUtf8(utf8, character); };
  for (; piece.size() >= mWidth; piece.remove_prefix(mWidth)) {
    char32_t unit = 0;
    for (std::size_t i = 0; i < mWidth; ++i)
      unit = unit << 8 | static_cast<unsigned char>(piece[mIsLittleEndian ? mWidth - 1 - i : i]);
    if (mWidth == 2)
      mJoiner.add(unit, append);
    else
      append(unit);
  }
  mRest = std::string(piece);
  if (!last) return kVoSuccess;
  mJoiner.finish(append);
  if (!mRest.empty()) append(kReplacementCharacter);  // cut off
  mRest.clear();
  mIsAtStart = true;
  return kVoSuccess;
}

TextConversion::TextConversion(const char* to, const char* from, Loss loss) {
  if (voIsUnicode(from)) {
    mpWide = std::make_unique<WideReader>(from);
    from = "utf-8";
    if (voIsEqualCharsetName(to, from)) return;
  }
  mpStage = VoMsgConverterFactory::getInstance()->newStage(to, from, {loss == Loss::replaced, '?'});
  if (!mpStage) mpWide.reset();
}

TextConversion::~TextConversion() = default;

VoErrorCode TextConversion::convertBytes(std::string_view piece, bool last, std::string& out) {
  for (;;) {
    const std::size_t nul = piece.find('\0');
    const bool endsHere = nul != piece.npos;
    const VoErrorCode code = mpStage->convert(piece.substr(0, nul), last || endsHere, out);
    if (voFailed(code) || !endsHere) return code;
    out += '\0';
    piece.remove_prefix(nul + 1);
  }
}

VoErrorCode TextConversion::convert(std::string_view piece, bool last, std::string& out) {
  if (!mpWide) return mpStage ? convertBytes(piece, last, out) : kVoConversionFailed;
  if (!mpStage) return mpWide->convert(piece, last, out);
  mDecoded.clear();
  const VoErrorCode code = mpWide->convert(piece, last, mDecoded);
  return voFailed(code) ? code : convertBytes(mDecoded, last, out);
}

bool convertWholeText(const char* to, const char* from, Loss loss, std::string_view text, std::string& out) {
  out.clear();
  TextConversion conversion(to, from, loss);
  return conversion.isOpen() && !voFailed(conversion.convert(text, true, out));
}

Conversion convertText(std::string& out, const char* to, const char* from, std::string_view text, VoErrorCode* code) {
  const std::unique_ptr<TextStage> stage = VoMsgConverterFactory::getInstance()->newStage(to, from, {true, '?'});
  if (!stage) return Conversion::missing;
  const std::string_view source = untilNul(text);
  std::string result;
  result.reserve(source.size());
  const VoErrorCode converted = stage->convert(source, true, result);
  out = std::move(result);
  if (code) *code = converted;
  return voFailed(converted) ? Conversion::failed : Conversion::done;
}

}  // namespace vomsg::detail
