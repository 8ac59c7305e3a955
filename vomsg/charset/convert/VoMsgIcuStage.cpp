#include "vomsg/charset/convert/VoMsgIcuStage.h"

#include "vomsg/charset/convert/VoMsgIcuPieces.h"

namespace vomsg::detail {

namespace {

class IcuStage final : public TextStage {
 public:
  IcuStage(IcuHandle from, IcuHandle to, AdjustUnits adjust)
      : mFrom(std::move(from)), mTo(std::move(to)), mTranscoder(*mFrom, *mTo, adjust) {}
  VoErrorCode convert(std::string_view piece, bool last, std::string& out) override {
    return voFailed(mTranscoder.convert(piece, last, out)) ? kVoConversionFailed : kVoSuccess;
  }

 private:
  const IcuHandle mFrom;
  const IcuHandle mTo;
  IcuTranscoder mTranscoder;
};

class MissingStage final : public TextStage {
 public:
  VoErrorCode convert(std::string_view, bool, std::string&) override { return kVoConverterMissing; }
};

}  // namespace

IcuTranscoder::IcuTranscoder(IcuConverter& from, IcuConverter& to, AdjustUnits adjust)
    : mFrom(from), mTo(to), mAdjust(adjust), mUnknown(setupOf(to).unknown), mIntoUtf8(isIcuUtf8(to)) {
  if (!adjust && !mIntoUtf8 && isIcuUtf8(from)) mpPivot = std::make_unique<IcuPivot>();
}

IcuTranscoder::~IcuTranscoder() = default;

void IcuTranscoder::append(std::string_view block, std::string& out) {
  if (mIsEnded) return;
  const std::string_view text = block.substr(0, block.find('\0'));
  out.append(text);
  mIsEnded = text.size() < block.size();
}

// False at half a surrogate pair that may not be replaced.
bool IcuTranscoder::appendUtf8Of(const char16_t* units, std::size_t count, bool last, std::string& out) {
  char block[3 * kIcuPiece + 16];
  char* to = block;
  bool isKnown = true;
  const auto put = [&](char32_t character) {
    if (!isSurrogate(character)) {
      to = putUtf8(to, character, utf8Length(character));
    } else if (mUnknown >= 0) {
      *to++ = static_cast<char>(mUnknown);
    } else if (mUnknown == IcuSetup::kDefault) {
      to = putUtf8(to, kReplacementCharacter, 3);
    } else {
      isKnown = false;
    }
  };
  for (std::size_t i = 0; i < count && isKnown;) {
    if (!mJoiner.isPending()) {
      const std::size_t ascii = copyAsciiUnits(units + i, count - i, to);
      i += ascii;
      to += ascii;
    }
    for (; i < count && isKnown && (units[i] >= 0x80 || mJoiner.isPending()); ++i) {
      if (units[i] < 0x80 || isSurrogate(units[i]) || mJoiner.isPending())
        mJoiner.add(units[i], put);
      else
        to = putUtf8(to, units[i], units[i] < 0x800 ? 2 : 3);
    }
  }
  if (last) mJoiner.finish(put);
  append({block, static_cast<std::size_t>(to - block)}, out);
  return isKnown;
}

VoErrorCode IcuTranscoder::convert(std::string_view piece, bool last, std::string& out) {
  if (!mIsStarted) {
    resetIcu(mFrom);
    resetIcu(mTo);
    mJoiner = SurrogateJoiner();
    if (mpPivot) mpPivot->source = mpPivot->target = mpPivot->units;
    mIsEnded = false;
    mIsStarted = true;
  }
  const auto sink = [&](std::string_view block) { append(block, out); };
  bool decoded = true;
  bool encoded = true;
  if (mpPivot) {
    encoded = transcodePieces(mFrom, mTo, *mpPivot, piece, last, sink);
  } else {
    decoded = decodePieces(mFrom, piece, last, [&](char16_t* units, std::size_t count, bool ends) {
      if (mAdjust) mAdjust(units, count);
      if (!encoded) return;
      encoded = mIntoUtf8 ? appendUtf8Of(units, count, ends, out) : encodePiece(mTo, {units, count}, ends, sink);
    });
  }
  const VoErrorCode code = !decoded ? kVoConverterMissing : !encoded ? kVoConversionFailed : kVoSuccess;
  mIsStarted = !last && !voFailed(code);
  return code;
}

std::unique_ptr<TextStage> newIcuStage(const char* to, const char* from, Replacement replacement, AdjustUnits adjust) {
  const std::int16_t rule = icuRuleOf(replacement);
  IcuHandle decoder = openIcu(from, {rule, IcuSetup::kDefault});
  IcuHandle encoder = openIcu(to, {IcuSetup::kDefault, rule});
  if (!decoder || !encoder) return std::make_unique<MissingStage>();
  return std::make_unique<IcuStage>(std::move(decoder), std::move(encoder), adjust);
}

}  // namespace vomsg::detail
