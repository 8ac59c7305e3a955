// From HZ (RFC 1843) to UTF-8.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgHZToUTF8CnConverter : public VoMsgPairConverterOf<VoMsgHZToUTF8CnConverter> {
 public:
  static constexpr char kTo[] = "utf-8";
  static constexpr char kFrom[] = "hz-gb-2312";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  VoErrorCode transform(std::string_view text, vomsg::detail::Replacement replacement, std::string& out) const override;
};
