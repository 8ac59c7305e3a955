// From HZ (RFC 1843) to UTF-8.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgHZToUTF8CnConverter : public VoMsgPairConverterOf<VoMsgHZToUTF8CnConverter> {
 public:
  static constexpr char kTo[] = "utf-8";
  static constexpr char kFrom[] = "hz-gb-2312";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
