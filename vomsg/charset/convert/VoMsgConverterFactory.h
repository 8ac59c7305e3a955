// Picks the converter for a pair of charsets from an ordered list of prototypes.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "vomsg/charset/convert/VoMsgStagedConverter.h"

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

  // For the library: the conversion without a converter around it; null when no class handles the pair. Throws
  // std::bad_alloc.
  std::unique_ptr<vomsg::detail::TextStage> newStage(const char* toCharset, const char* fromCharset,
                                                     vomsg::detail::Replacement replacement);

 private:
  struct Prototype {
    std::unique_ptr<VoMsgStagedConverter> converter;
    int to, from;  // the pair, as records of the table of names, of a class that has only one; else negative
  };

  template <class Converter>
  void add();
  template <class Ask>
  auto firstOf(const char* toCharset, const char* fromCharset, Ask ask) const
      -> decltype(ask(std::declval<VoMsgStagedConverter&>(), toCharset, fromCharset));

  VoMsgConverterFactory();

  std::vector<Prototype> mPrototypes;
};
