// From GB2312 to UTF-8. GBK is read too.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgEUCToUTF8CnConverter : public VoMsgPairConverterOf<VoMsgEUCToUTF8CnConverter> {
 public:
  static constexpr char kTo[] = "utf-8";
  static constexpr char kFrom[] = "gb2312";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
