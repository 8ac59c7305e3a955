// What the charset analysis reads a text through: a filter may take markup away before the detectors see the bytes.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

class VoMsgTextFilterSession;

class VOMSG_API VoMsgTextFormatFilter {
 public:
  virtual ~VoMsgTextFormatFilter();
  // Puts the filtered form of the `size` bytes at `text` into `session` (null: into a new one, which the caller then
  // owns) and returns it; null when memory runs out. Both arguments are borrowed; `text` may be null.
  virtual VoMsgTextFilterSession* filterText(const char* text, unsigned size, VoMsgTextFilterSession* session) = 0;
  // True when the filter is for that content type; null is none.
  virtual bool matchMIMEType(const char* mimeType) = 0;
};

// Places for filters to come; neither is registered anywhere.
class VOMSG_API VoMsgHTMLTextFilter : public VoMsgTextFormatFilter {};
class VOMSG_API VoMsgRTFTextFilter : public VoMsgTextFormatFilter {};
