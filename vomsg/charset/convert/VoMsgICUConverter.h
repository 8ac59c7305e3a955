// Every pair of charsets that ICU can open and no other class has taken, Unicode's 16-bit and 32-bit forms excepted.
// Invalid input decodes to U+FFFD. The result ends at its first NUL; on failure `out` is empty.
#pragma once

#include <cstddef>

#include "vomsg/charset/convert/VoMsgIcuHandle.h"
#include "vomsg/charset/convert/VoMsgStagedConverter.h"

class VOMSG_API VoMsgICUConverter : public VoMsgStagedConverter {
 public:
  VoMsgICUConverter();
  // Opens both sides under the names given. When ICU refuses one, convert returns kVoConverterMissing.
  VoMsgICUConverter(const char* toCharset, const char* fromCharset, signed char enforce, char replaceChar);
  ~VoMsgICUConverter() override;

  // Null also for names of 64 bytes and more, for names that voIsUnicode knows, and for the source "iso-2022-cn".
  VoMsgCharsetConverter* copy(const char* toCharset, const char* fromCharset, signed char enforce,
                              char replaceChar) override;
  // Also kVoConverterMissing when decoding fails. Each call is a conversion of its own.
  VoErrorCode convert(std::string& out, std::string& in) override;
  std::unique_ptr<vomsg::detail::TextStage> newStageFor(const char* toCharset, const char* fromCharset,
                                                        vomsg::detail::Replacement replacement) const override;

 private:
  static constexpr std::size_t kLongestName = 64;

  bool isOpen() const { return mpFromConverter && mpToConverter; }

  char mToName[kLongestName + 1] = {};
  char mFromName[kLongestName + 1] = {};
  vomsg::detail::IcuHandle mpFromConverter;
  vomsg::detail::IcuHandle mpToConverter;
};
