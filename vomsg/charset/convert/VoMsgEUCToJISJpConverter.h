// From EUC-JP to ISO-2022-JP. Half-width kana become full-width ones.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgEUCToJISJpConverter : public VoMsgPairConverterOf<VoMsgEUCToJISJpConverter> {
 public:
  static constexpr char kTo[] = "iso-2022-jp";
  static constexpr char kFrom[] = "euc-jp";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  VoErrorCode transform(std::string_view text, vomsg::detail::Replacement replacement, std::string& out) const override;
};
