// From ISO-2022-JP to Shift_JIS. Half-width kana stay half-width.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgJISToSJISJpConverter : public VoMsgPairConverterOf<VoMsgJISToSJISJpConverter> {
 public:
  static constexpr char kTo[] = "Shift_jis";
  static constexpr char kFrom[] = "iso-2022-jp";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
