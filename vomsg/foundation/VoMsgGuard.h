// Exported operations are walls: what throws inside becomes a code there, and a mark that memory was refused.
#pragma once

#include <utility>

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgShortage.h"

namespace vomsg::detail {

// Thrown where a shortage other than of memory ends an operation from deep inside.
struct Failure {
  VoErrorCode code;
};

template <class Body>
VoErrorCode guarded(Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (const Failure& failure) {
    return noteShortage(failure.code);
  } catch (...) {
    return noteShortage(kVoNoMemory);
  }
}

// The same for operations that answer with a value: `fallback` is the answer when anything is short.
template <class Value, class Body>
Value guardedOr(Value fallback, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (const Failure& failure) {
    noteShortage(failure.code);
    return fallback;
  } catch (...) {
    noteShortage(kVoNoMemory);
    return fallback;
  }
}

}  // namespace vomsg::detail
