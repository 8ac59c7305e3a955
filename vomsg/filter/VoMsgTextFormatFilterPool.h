// The filters that the charset analysis chooses from.
#pragma once

#include <vector>

#include "vomsg/foundation/VoMsgExport.h"

class VoMsgTextFormatFilter;

class VOMSG_API VoMsgTextFormatFilterPool {
 public:
  VoMsgTextFormatFilterPool();  // holds a VoMsgPlainTextFilter
  VoMsgTextFormatFilterPool(const VoMsgTextFormatFilterPool&) = delete;
  VoMsgTextFormatFilterPool& operator=(const VoMsgTextFormatFilterPool&) = delete;
  ~VoMsgTextFormatFilterPool();

  // The first filter, in the order of registration, that accepts the content type; null when none does. Borrowed.
  VoMsgTextFormatFilter* getFilter(const char* mimeType);

 private:
  std::vector<VoMsgTextFormatFilter*> mFilters;  // owned
};
