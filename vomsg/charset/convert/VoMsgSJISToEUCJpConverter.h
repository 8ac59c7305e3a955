// From Shift_JIS to EUC-JP. Half-width kana stay half-width.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgSJISToEUCJpConverter : public VoMsgPairConverterOf<VoMsgSJISToEUCJpConverter> {
 public:
  static constexpr char kTo[] = "euc-jp";
  static constexpr char kFrom[] = "Shift_jis";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
