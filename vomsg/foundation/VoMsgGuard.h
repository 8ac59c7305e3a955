// Exported operations are walls: what throws inside becomes a code there, and a mark that memory was refused.
#pragma once

#include <utility>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgShortage.h"

namespace vomsg::detail {

template <class Body>
VoErrorCode guarded(Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return noteShortage(kVoNoMemory);
  }
}

// The same for operations that answer with a value: `fallback` is the answer when memory runs out.
template <class Value, class Body>
Value guardedOr(Value fallback, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    noteShortage(kVoNoMemory);
    return fallback;
  }
}

}  // namespace vomsg::detail
