// From UTF-8 to GB2312.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgUTF8ToEUCCnConverter : public VoMsgPairConverterOf<VoMsgUTF8ToEUCCnConverter> {
 public:
  static constexpr char kTo[] = "gb2312";
  static constexpr char kFrom[] = "utf-8";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
