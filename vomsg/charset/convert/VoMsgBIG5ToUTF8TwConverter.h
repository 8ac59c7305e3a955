// From Big5 to UTF-8.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgBIG5ToUTF8TwConverter : public VoMsgPairConverterOf<VoMsgBIG5ToUTF8TwConverter> {
 public:
  static constexpr char kTo[] = "utf-8";
  static constexpr char kFrom[] = "big5";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
