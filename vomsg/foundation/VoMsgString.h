// A text and the name of its charset.
#pragma once

#include "vomsg/foundation/VoMsgCString.h"
#include "vomsg/foundation/VoMsgExport.h"

class VOMSG_API VoMsgString {
 public:
  VoMsgString(const char* text, const char* charset);        // copies both; either may be null
  const char* getString() const { return mText.get(); }      // borrowed
  const char* getCharset() const { return mCharset.get(); }  // borrowed

 private:
  vomsg::detail::CString mText;
  vomsg::detail::CString mCharset;
};
