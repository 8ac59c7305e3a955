// From ISO-2022-JP to UTF-8. Half-width kana stay half-width.
// The factory leaves this pair to ICU.
#pragma once

#include "vomsg/charset/convert/VoMsgPairConverter.h"

class VOMSG_API VoMsgJISToUTF8JpConverter : public VoMsgPairConverterOf<VoMsgJISToUTF8JpConverter> {
 public:
  static constexpr char kTo[] = "utf-8";
  static constexpr char kFrom[] = "iso-2022-jp";

  using VoMsgPairConverterOf::VoMsgPairConverterOf;

 protected:
  std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const override;
};
