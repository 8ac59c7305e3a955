// What the system refused: memory, room for temporary data, a descriptor; or what a limit of the host's on such things
// refused in its place. Many operations answer a shortage as they answer broken data, with null or with a code that
// says both, and their callers go on without the content. Who must not lose content watches for the mark instead of
// guessing from codes: a mark is set where something was refused, and nowhere else.
//
// Marks belong to the thread, as the objects in use do.
#pragma once

#include <cstdint>

#include "vomsg/foundation/VoErrorCode.h"

namespace vomsg::detail {

// Marks that something was refused for good: whoever can do without it must not call this. `code` says what a failed
// operation would return for it: kVoNoMemory, kVoReadFailed or kVoWriteFailed. Returns `code`.
VoErrorCode noteShortage(VoErrorCode code) noexcept;

// Sees the marks that are set while it lives. Any number may watch at once, inside each other.
class ShortageWatch {
 public:
  ShortageWatch() noexcept;
  bool seen() const noexcept;
  // The code of the last mark; of no meaning unless seen().
  VoErrorCode code() const noexcept;

 private:
  std::uint64_t mCount;
};

}  // namespace vomsg::detail
