// From Shift_JIS to ISO-2022-JP. Half-width kana become full-width ones.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgSJISToJISJpConverter : public VoMsgPairConverterOf<VoMsgSJISToJISJpConverter> {
 public:
  static constexpr char kTo[] = "iso-2022-jp";
  static constexpr char kFrom[] = "Shift_jis";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  VoErrorCode transform(std::string_view text, vomsg::detail::Replacement replacement, std::string& out) const override;
};
