// A conversion between two charsets, obtained from VoMsgConverterFactory.
#pragma once

#include <string>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgExport.h"

class VOMSG_API VoMsgCharsetConverter {
 public:
  // The default constructor makes a prototype, whose fields are never read.
  VoMsgCharsetConverter() = default;
  VoMsgCharsetConverter(signed char enforce, char replaceChar) : mEnforce(enforce), mReplaceChar(replaceChar) {}

  virtual ~VoMsgCharsetConverter();
  // A new converter of the same class for the pair, or null when the class does not handle it. Target first.
  virtual VoMsgCharsetConverter* copy(const char* toCharset, const char* fromCharset, signed char enforce,
                                      char replaceChar) = 0;
  // Converts all of `in` (up to its first NUL, for most classes) into `out`; they may be the same object.
  // kVoConversionFailed: a character has no code in the target and `enforce` is 0.
  virtual VoErrorCode convert(std::string& out, std::string& in) = 0;

  signed char getEnforce() const { return mEnforce; }
  void setEnforce(signed char enforce) { mEnforce = enforce; }
  char getReplaceChar() const { return mReplaceChar; }
  void setReplaceChar(char replaceChar) { mReplaceChar = replaceChar; }

 protected:
  signed char mEnforce = 0;  // 1: what the target cannot say becomes mReplaceChar; 0: it ends the conversion
  char mReplaceChar = 0;
};
