// What the converters between two certain charsets share. Each of them names its pair and rewrites the text.
#pragma once

#include <new>
#include <string_view>

#include "vomsg/charset/convert/VoMsgCharsetConverter.h"
#include "vomsg/charset/convert/VoMsgReplacement.h"

class VOMSG_API VoMsgPairConverter : public VoMsgCharsetConverter {
 public:
  using VoMsgCharsetConverter::VoMsgCharsetConverter;

  // Text ends at the first NUL. On failure `out` is empty.
  VoErrorCode convert(std::string& out, std::string& in) override;

 protected:
  // Appends the rewritten `text`, which holds no NUL, to `out`.
  virtual VoErrorCode transform(std::string_view text, vomsg::detail::Replacement replacement,
                                std::string& out) const = 0;
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
};
