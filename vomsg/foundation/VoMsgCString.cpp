#include "vomsg/foundation/VoMsgCString.h"

#include <cstring>

#include "vomsg/foundation/VoMsgShortage.h"

namespace vomsg::detail {

CString copyCString(std::string_view text) noexcept {
  CString copy(static_cast<char*>(std::malloc(text.size() + 1)));
  if (!copy) {
    noteShortage(kVoNoMemory);
    return copy;
  }
  if (!text.empty()) std::memcpy(copy.get(), text.data(), text.size());
  copy.get()[text.size()] = '\0';
  return copy;
}

CString copyCStringOrNull(const char* text) noexcept { return text ? copyCString(text) : nullptr; }

}  // namespace vomsg::detail
