// How the library's own sources write to the host's log. Each defines kLogSource, the name of the class it holds.
//
// The arguments of a line, the tag above all, are computed only when somebody listens: the identifier of a message is
// found by climbing to the root of its tree, and most hosts log nothing.
#pragma once

#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoMsgLog.h"

namespace vomsg::detail {

// Whether voMessageLog, or voMsgDiagnosticLog with `level`, would write anything.
bool isLogged();
bool isDiagnosed(unsigned level);

// The one line that a failed public operation leaves. Returns `code`; a success is not worth a line. `tag` is a
// function that gives the tag.
template <class Tag>
VoErrorCode logged(VoErrorCode code, const char* source, const char* function, unsigned line, const Tag& tag) {
  if (voFailed(code) && isLogged())
    voMessageLog(1, source, function, line, tag(), "%s failed. (error code:%x)", function, code);
  return code;
}

}  // namespace vomsg::detail

// VO_LOG(1, _getUUIDString(), "Can not open file [%s].", name);
#define VO_LOG(level, tag, ...)                                                                        \
  (::vomsg::detail::isLogged() ? voMessageLog(level, kLogSource, __func__, __LINE__, tag, __VA_ARGS__) \
                               : static_cast<void>(0))
#define VO_DIAGNOSTIC(level, tag, ...)                                                                               \
  (::vomsg::detail::isDiagnosed(level) ? voMsgDiagnosticLog(level, kLogSource, __func__, __LINE__, tag, __VA_ARGS__) \
                                       : static_cast<void>(0))

// return VO_LOGGED(_getUUIDString(), guarded([&] { ... }));
// To be used in the function that the line shall name, not in a lambda.
#define VO_LOGGED(tag, ...) \
  ::vomsg::detail::logged((__VA_ARGS__), kLogSource, __func__, static_cast<unsigned>(__LINE__), [&]() { return tag; })
