#include "vomsg/filter/VoMsgTextFormatFilterPool.h"

#include <memory>

#include "vomsg/filter/VoMsgPlainTextFilter.h"

VoMsgTextFormatFilterPool::VoMsgTextFormatFilterPool() {
  auto filter = std::make_unique<VoMsgPlainTextFilter>();
  mFilters.push_back(filter.get());
  filter.release();
}

VoMsgTextFormatFilterPool::~VoMsgTextFormatFilterPool() {
  for (; !mFilters.empty(); mFilters.pop_back()) delete mFilters.back();
}

VoMsgTextFormatFilter* VoMsgTextFormatFilterPool::getFilter(const char* mimeType) {
  for (VoMsgTextFormatFilter* filter : mFilters)
    if (filter->matchMIMEType(mimeType)) return filter;
  return nullptr;
}
