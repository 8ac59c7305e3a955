// A text by way of ICU, in pieces.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vomsg/charset/convert/VoMsgIcuHandle.h"
#include "vomsg/charset/convert/VoMsgReplacement.h"
#include "vomsg/charset/convert/VoMsgTextStage.h"
#include "vomsg/encoding/VoMsgUtf16Coder.h"

namespace vomsg::detail {

// What changes units on their way; what it makes kNoCharacter no target can say.
inline constexpr char16_t kNoCharacter = 0xDC00;  // half of a surrogate pair
using AdjustUnits = void (*)(char16_t* units, std::size_t count);

// Puts `to` for `from`, in a form that compilers turn into vector code: it runs over all of a text.
inline void replaceUnits(char16_t* units, std::size_t count, char16_t from, char16_t to) noexcept {
  for (std::size_t i = 0; i < count; ++i) units[i] = units[i] == from ? to : units[i];
}

// Between two converters of ICU that are set up already. The result ends before its first NUL, the rest of the text is
// only looked at: as if everything were decoded first and encoded then, kVoConverterMissing when decoding fails
// anywhere in the piece, else kVoConversionFailed when encoding fails.
//
// UTF-8 goes straight into the target where nothing is to be changed on the way, and into UTF-8 the text goes by our
// own loop: both are faster than by way of ICU's general one.
class IcuTranscoder {
 public:
  IcuTranscoder(IcuConverter& from, IcuConverter& to, AdjustUnits adjust = nullptr);  // both borrowed
  ~IcuTranscoder();
  VoErrorCode convert(std::string_view piece, bool last, std::string& out);

 private:
  bool appendUtf8Of(const char16_t* units, std::size_t count, bool last, std::string& out);
  void append(std::string_view block, std::string& out);

  IcuConverter& mFrom;
  IcuConverter& mTo;
  const AdjustUnits mAdjust;
  const std::int16_t mUnknown;
  const bool mIntoUtf8;
  bool mIsStarted = false;
  bool mIsEnded = false;  // by a NUL
  SurrogateJoiner mJoiner;
  std::unique_ptr<IcuPivot> mpPivot;  // null: not the straight way
};

// Between two charsets by name, under one rule for what is invalid in the one and what is unknown to the other.
// kVoConverterMissing: ICU lacks one of them; kVoConversionFailed: there is such a character and no replacement is
// allowed.
std::unique_ptr<TextStage> newIcuStage(const char* to, const char* from, Replacement replacement,
                                       AdjustUnits adjust = nullptr);

}  // namespace vomsg::detail
