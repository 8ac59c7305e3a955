#include "vomsg/foundation/VoMsgShortage.h"

namespace vomsg::detail {

namespace {

thread_local std::uint64_t tCount = 0;
thread_local VoErrorCode tCode = kVoNoMemory;

}  // namespace

VoErrorCode noteShortage(VoErrorCode code) noexcept {
  ++tCount;
  return tCode = code;
}

ShortageWatch::ShortageWatch() noexcept : mCount(tCount) {}
bool ShortageWatch::seen() const noexcept { return mCount != tCount; }
VoErrorCode ShortageWatch::code() const noexcept { return tCode; }

}  // namespace vomsg::detail
