// From EUC-JP to Shift_JIS. Half-width kana stay half-width; characters of three bytes have no code there.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgEUCToSJISJpConverter : public VoMsgPairConverterOf<VoMsgEUCToSJISJpConverter> {
 public:
  static constexpr char kTo[] = "Shift_jis";
  static constexpr char kFrom[] = "euc-jp";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
