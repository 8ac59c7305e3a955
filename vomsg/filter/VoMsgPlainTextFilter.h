// The filter for text/plain: the text as it stands.
#pragma once

#include "vomsg/filter/VoMsgTextFilterSession.h"
#include "vomsg/filter/VoMsgTextFormatFilter.h"

class VOMSG_API VoMsgPlainTextFilterSession : public VoMsgTextFilterSession {};

class VOMSG_API VoMsgPlainTextFilter : public VoMsgTextFormatFilter {
 public:
  // The context is a copy with 16 spare bytes after it. A copy that memory does not suffice for leaves a null context
  // with the size of the text.
  VoMsgTextFilterSession* filterText(const char* text, unsigned size, VoMsgTextFilterSession* session) override;
  // "text/plain", in any case, and then the end, a space or ";".
  bool matchMIMEType(const char* mimeType) override;
};
