// From ISO-2022-JP to US-ASCII: nothing but ASCII is left.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgJISToASCIIJpConverter : public VoMsgPairConverterOf<VoMsgJISToASCIIJpConverter> {
 public:
  static constexpr char kTo[] = "us-ascii";
  static constexpr char kFrom[] = "iso-2022-jp";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
