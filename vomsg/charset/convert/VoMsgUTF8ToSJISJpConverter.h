// From UTF-8 to Shift_JIS. Half-width kana stay half-width.
// The factory leaves this pair to ICU.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgUTF8ToSJISJpConverter : public VoMsgPairConverterOf<VoMsgUTF8ToSJISJpConverter> {
 public:
  static constexpr char kTo[] = "Shift_jis";
  static constexpr char kFrom[] = "utf-8";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
