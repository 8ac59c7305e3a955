#include "vomsg/filter/VoMsgTextFilterSession.h"

#include <cstdlib>
#include <cstring>

namespace {
constexpr std::size_t kSlack = 16;  // filters may write a little past their text
}  // namespace

VoMsgTextFilterSession::~VoMsgTextFilterSession() { std::free(mpRecentContext); }

const char* VoMsgTextFilterSession::getCharSet() { return nullptr; }

char* VoMsgTextFilterSession::getRecentContext() { return mpRecentContext; }

unsigned VoMsgTextFilterSession::getRecentContextSize() { return mRecentContextSize; }

int VoMsgTextFilterSession::setRecentContext(char* data, unsigned size) {
  releaseRecentContext();
  mpRecentContext = data;
  mRecentContextSize = size;
  return 0;
}

int VoMsgTextFilterSession::releaseRecentContext() {
  std::free(mpRecentContext);
  mpRecentContext = nullptr;
  mRecentContextSize = 0;
  mCapacity = 0;
  return 0;
}

void VoMsgTextFilterSession::copyText(const char* text, unsigned size) {
  if (!text || size == 0) {
    setRecentContext(nullptr, size);
    return;
  }
  if (size <= mCapacity) {
    std::memmove(mpRecentContext, text, size);
    mRecentContextSize = size;
    return;
  }
  const std::size_t room = size + kSlack;  // wraps where addresses have 32 bits
  char* const block = room > size ? static_cast<char*>(std::malloc(room)) : nullptr;
  if (block) std::memcpy(block, text, size);
  setRecentContext(block, size);
  if (block && block == mpRecentContext) mCapacity = size;  // a derived session may have put it elsewhere
}
