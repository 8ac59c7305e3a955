// From ISO-2022-JP to EUC-JP. Half-width kana stay half-width.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgJISToEUCJpConverter : public VoMsgPairConverterOf<VoMsgJISToEUCJpConverter> {
 public:
  static constexpr char kTo[] = "euc-jp";
  static constexpr char kFrom[] = "iso-2022-jp";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
