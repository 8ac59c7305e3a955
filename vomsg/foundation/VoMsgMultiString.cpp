#include "vomsg/foundation/VoMsgMultiString.h"

#include <algorithm>

#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/foundation/VoMsgGuard.h"

VoMsgMultiString::VoMsgMultiString(const char* text) : VoMsgMultiString(text, nullptr) {}

VoMsgMultiString::VoMsgMultiString(const char* text, const char* charset) : mFirst(text, charset) {}

const char* VoMsgMultiString::getString(const char* charset) const {
  const VoMsgString* found = find(charset);
  return found ? found->getString() : nullptr;
}

const char* VoMsgMultiString::getCharsetRef(const char* charset) const {
  const VoMsgString* found = find(charset);
  return found ? found->getCharset() : nullptr;
}

void VoMsgMultiString::addString(const char* text, const char* charset) {
  vomsg::detail::guardedOr(false, [&] {
    mOthers.emplace_back(text, charset);
    return true;
  });
}

const VoMsgString* VoMsgMultiString::find(const char* charset) const {
  if (!charset) return &mFirst;
  const auto found = std::find_if(mOthers.begin(), mOthers.end(), [&](const VoMsgString& other) {
    return voIsEqualCharsetName(other.getCharset(), charset);
  });
  return found == mOthers.end() ? nullptr : &*found;
}
