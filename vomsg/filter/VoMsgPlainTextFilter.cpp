#include "vomsg/filter/VoMsgPlainTextFilter.h"

#include <new>
#include <string_view>

#include "vomsg/foundation/VoMsgAscii.h"

VoMsgTextFilterSession* VoMsgPlainTextFilter::filterText(const char* text, unsigned size,
                                                         VoMsgTextFilterSession* session) {
  if (!session) session = new (std::nothrow) VoMsgPlainTextFilterSession;
  if (session) session->copyText(text, size);
  return session;
}

bool VoMsgPlainTextFilter::matchMIMEType(const char* mimeType) {
  constexpr std::string_view kType = "text/plain";
  const std::string_view type = vomsg::detail::viewOf(mimeType);
  if (!vomsg::detail::startsWithNoCase(type, kType)) return false;
  return type.size() == kType.size() || type[kType.size()] == ' ' || type[kType.size()] == ';';
}
