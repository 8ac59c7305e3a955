// From UTF-8 to ISO-2022-JP. Half-width kana become full-width ones.
// The factory leaves this pair to ICU.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgUTF8ToJISJpConverter : public VoMsgPairConverterOf<VoMsgUTF8ToJISJpConverter> {
 public:
  static constexpr char kTo[] = "iso-2022-jp";
  static constexpr char kFrom[] = "utf-8";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
