#include "vomsg/foundation/VoMsgLogLine.h"

#include "vomsg/foundation/VoIntLog.h"

namespace vomsg::detail {

bool isLogged() { return grGetLog()->isEnabled(kVoModule); }

bool isDiagnosed(unsigned level) { return isLogged() || grGetLog()->getLogLevel() >= level; }

}  // namespace vomsg::detail
