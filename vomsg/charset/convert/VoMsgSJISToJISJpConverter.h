// From Shift_JIS to ISO-2022-JP. Half-width kana become full-width ones.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgSJISToJISJpConverter : public VoMsgPairConverterOf<VoMsgSJISToJISJpConverter> {
 public:
  static constexpr char kTo[] = "iso-2022-jp";
  static constexpr char kFrom[] = "Shift_jis";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
