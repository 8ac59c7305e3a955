// From one ISO 8859 charset to another, through the mapping tables. Stops at the first NUL. On failure `out` holds what
// was converted before.
#pragma once

#include "vomsg/charset/convert/VoMsgStagedConverter.h"

struct VoUnicodeTable;

class VOMSG_API VoMsgToISO8859EuConverter : public VoMsgStagedConverter {
 public:
  VoMsgToISO8859EuConverter() = default;
  VoMsgToISO8859EuConverter(const VoUnicodeTable* toTable, const VoUnicodeTable* fromTable, signed char enforce,
                            char replaceChar);
  ~VoMsgToISO8859EuConverter() override;

  VoMsgCharsetConverter* copy(const char* toCharset, const char* fromCharset, signed char enforce,
                              char replaceChar) override;
  VoErrorCode convert(std::string& out, std::string& in) override;
  std::unique_ptr<vomsg::detail::TextStage> newStageFor(const char* toCharset, const char* fromCharset,
                                                        vomsg::detail::Replacement replacement) const override;

 private:
  const VoUnicodeTable* mpToTable = nullptr;  // borrowed, static
  const VoUnicodeTable* mpFromTable = nullptr;
};
