// From an ISO 8859 charset to UTF-8. Stops at the first NUL. On failure `out` holds what was converted before.
#pragma once

#include "vomsg/charset/convert/VoMsgStagedConverter.h"

struct VoUnicodeTable;

class VOMSG_API VoMsgToUTF8EuConverter : public VoMsgStagedConverter {
 public:
  VoMsgToUTF8EuConverter() = default;
  VoMsgToUTF8EuConverter(const VoUnicodeTable* fromTable, signed char enforce, char replaceChar);
  ~VoMsgToUTF8EuConverter() override;

  VoMsgCharsetConverter* copy(const char* toCharset, const char* fromCharset, signed char enforce,
                              char replaceChar) override;
  VoErrorCode convert(std::string& out, std::string& in) override;
  std::unique_ptr<vomsg::detail::TextStage> newStageFor(const char* toCharset, const char* fromCharset,
                                                        vomsg::detail::Replacement replacement) const override;

 private:
  const VoUnicodeTable* mpFromTable = nullptr;  // borrowed, static
};
