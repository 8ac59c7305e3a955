// What the converters between two certain charsets share. Each of them names its pair and its stage.
#pragma once

#include <new>

#include "vomsg/charset/convert/VoMsgStagedConverter.h"

class VOMSG_API VoMsgPairConverter : public VoMsgStagedConverter {
 public:
  using VoMsgStagedConverter::VoMsgStagedConverter;

  // Text ends at the first NUL. On failure `out` is empty.
  VoErrorCode convert(std::string& out, std::string& in) override;

 protected:
  virtual std::unique_ptr<vomsg::detail::TextStage> newStage(vomsg::detail::Replacement replacement) const = 0;
  static bool isPair(const char* to, const char* wantedTo, const char* from, const char* wantedFrom);
};

// The base of `Class`, which has the canonical names of its pair in kTo and kFrom.
template <class Class>
class VoMsgPairConverterOf : public VoMsgPairConverter {
 public:
  using VoMsgPairConverter::VoMsgPairConverter;

  VoMsgCharsetConverter* copy(const char* toCharset, const char* fromCharset, signed char enforce,
                              char replaceChar) override {
    if (!isPair(toCharset, Class::kTo, fromCharset, Class::kFrom)) return nullptr;
    return new (std::nothrow) Class(enforce, replaceChar);
  }
  std::unique_ptr<vomsg::detail::TextStage> newStageFor(const char* toCharset, const char* fromCharset,
                                                        vomsg::detail::Replacement replacement) const override {
    return isPair(toCharset, Class::kTo, fromCharset, Class::kFrom) ? newStage(replacement) : nullptr;
  }
};
