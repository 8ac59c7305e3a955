// From EUC-JP to ISO-2022-JP. Half-width kana become full-width ones.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgEUCToJISJpConverter : public VoMsgPairConverterOf<VoMsgEUCToJISJpConverter> {
 public:
  static constexpr char kTo[] = "iso-2022-jp";
  static constexpr char kFrom[] = "euc-jp";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
