// From UTF-8 to an ISO 8859 charset. Stops at the first NUL. On failure `out` holds what was converted before.
#pragma once

#include "vomsg/charset/convert/VoMsgStagedConverter.h"

struct VoUnicodeTable;

class VOMSG_API VoMsgUTF8ToISO8859EuConverter : public VoMsgStagedConverter {
 public:
  VoMsgUTF8ToISO8859EuConverter() = default;
  VoMsgUTF8ToISO8859EuConverter(const VoUnicodeTable* toTable, signed char enforce, char replaceChar);
  ~VoMsgUTF8ToISO8859EuConverter() override;

  VoMsgCharsetConverter* copy(const char* toCharset, const char* fromCharset, signed char enforce,
                              char replaceChar) override;
  VoErrorCode convert(std::string& out, std::string& in) override;
  std::unique_ptr<vomsg::detail::TextStage> newStageFor(const char* toCharset, const char* fromCharset,
                                                        vomsg::detail::Replacement replacement) const override;

 private:
  const VoUnicodeTable* mpToTable = nullptr;  // borrowed, static
};
