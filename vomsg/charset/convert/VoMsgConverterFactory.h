// Picks the converter for a pair of charsets from an ordered list of prototypes.
#pragma once

#include <memory>
#include <vector>

#include "vomsg/charset/convert/VoMsgCharsetConverter.h"

class VOMSG_API VoMsgConverterFactory {
 public:
  static VoMsgConverterFactory* getInstance();

  // A converter for the pair, target first; the caller gives it back to destoryConverter. Null when no class
  // handles the pair. `enforce` 1: what the target cannot say becomes `replaceChar`; 0: convert fails there.
  VoMsgCharsetConverter* createConverter(const char* toCharset, const char* fromCharset, signed char enforce,
                                         char replaceChar);
  // Deletes a converter; null is accepted. Always kVoSuccess.
  VoErrorCode destoryConverter(VoMsgCharsetConverter* converter);

  ~VoMsgConverterFactory();

 private:
  VoMsgConverterFactory();

  std::vector<std::unique_ptr<VoMsgCharsetConverter>> mPrototypes;
};
