// From GB2312 to HZ (RFC 1843).
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgGBToHZCnConverter : public VoMsgPairConverterOf<VoMsgGBToHZCnConverter> {
 public:
  static constexpr char kTo[] = "hz-gb-2312";
  static constexpr char kFrom[] = "gb2312";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  VoErrorCode transform(std::string_view text, vomsg::detail::Replacement replacement, std::string& out) const override;
};
