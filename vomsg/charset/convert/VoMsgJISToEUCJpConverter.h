// From ISO-2022-JP to EUC-JP. Half-width kana stay half-width.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgJISToEUCJpConverter : public VoMsgPairConverterOf<VoMsgJISToEUCJpConverter> {
 public:
  static constexpr char kTo[] = "euc-jp";
  static constexpr char kFrom[] = "iso-2022-jp";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  VoErrorCode transform(std::string_view text, vomsg::detail::Replacement replacement, std::string& out) const override;
};
