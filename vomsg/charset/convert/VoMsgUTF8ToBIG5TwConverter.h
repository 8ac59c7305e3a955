// From UTF-8 to Big5.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgUTF8ToBIG5TwConverter : public VoMsgPairConverterOf<VoMsgUTF8ToBIG5TwConverter> {
 public:
  static constexpr char kTo[] = "big5";
  static constexpr char kFrom[] = "utf-8";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
