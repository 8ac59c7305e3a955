// From GB2312 to HZ (RFC 1843).
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgGBToHZCnConverter : public VoMsgPairConverterOf<VoMsgGBToHZCnConverter> {
 public:
  static constexpr char kTo[] = "hz-gb-2312";
  static constexpr char kFrom[] = "gb2312";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
