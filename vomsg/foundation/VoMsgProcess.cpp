#include "vomsg/foundation/VoMsgProcess.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "vomsg/foundation/VoMsgRandomDraws.h"

int voMsgGetVersion(char* buffer, unsigned size) {
  return std::snprintf(buffer, size, "%s %s.%s.%s", "[VO Message Module]", "1.100", "0", "0000");
}

void vo_initProcess(unsigned seed) {
  const auto now = static_cast<unsigned long>(std::time(nullptr));
  vomsg::detail::RandomDraws().seed(static_cast<long>((now & 0xFFFFu) | (static_cast<unsigned long>(seed) << 16)));
}
