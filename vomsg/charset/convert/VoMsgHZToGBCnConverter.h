// From HZ (RFC 1843) to GB2312.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgHZToGBCnConverter : public VoMsgPairConverterOf<VoMsgHZToGBCnConverter> {
 public:
  static constexpr char kTo[] = "gb2312";
  static constexpr char kFrom[] = "hz-gb-2312";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
