// What all converters of the factory share: their conversion is a stage that takes a text in pieces.
#pragma once

#include <memory>

#include "vomsg/charset/convert/VoMsgCharsetConverter.h"
#include "vomsg/charset/convert/VoMsgReplacement.h"
#include "vomsg/charset/convert/VoMsgTextStage.h"

class VOMSG_API VoMsgStagedConverter : public VoMsgCharsetConverter {
 public:
  using VoMsgCharsetConverter::VoMsgCharsetConverter;

  // The conversion that copy() would give an object for, between canonical names; null when the class does not handle
  // the pair. Throws std::bad_alloc.
  virtual std::unique_ptr<vomsg::detail::TextStage> newStageFor(const char* toCharset, const char* fromCharset,
                                                                vomsg::detail::Replacement replacement) const = 0;

 protected:
  // Converts `in` up to its first NUL as one text. On failure `out` is what was converted before, or empty.
  static VoErrorCode convertWhole(vomsg::detail::TextStage& stage, bool keepsOnFailure, std::string& out,
                                  const std::string& in);
  vomsg::detail::Replacement replacement() const { return {mEnforce == 1, mReplaceChar}; }
};
