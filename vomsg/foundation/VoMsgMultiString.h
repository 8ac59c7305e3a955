// One text as first given, and the same text in further charsets.
#pragma once

#include <vector>

#include "vomsg/foundation/VoMsgString.h"

class VOMSG_API VoMsgMultiString {
 public:
  explicit VoMsgMultiString(const char* text);
  VoMsgMultiString(const char* text, const char* charset);

  // The string as first given, and its charset; borrowed, may be null.
  const char* getString() const { return mFirst.getString(); }
  const char* getCharset() const { return mFirst.getCharset(); }

  // The first added string whose charset name equals `charset` (canonical names compared; the string as first
  // given is not consulted), or null. A null `charset` gives the string as first given.
  const char* getString(const char* charset) const;
  // The charset name under which that string was added, or null.
  const char* getCharsetRef(const char* charset) const;

  // Adds the text in another charset; both are copied. Without memory nothing is added.
  void addString(const char* text, const char* charset);

 private:
  const VoMsgString* find(const char* charset) const;

  VoMsgString mFirst;
  std::vector<VoMsgString> mOthers;
};
