// The part that holds what a message says.
#pragma once

#include "vomsg/entity/VoMsgEntity.h"

namespace cli {

// Null when there is none. A bare TNEF stream has its texts in front of its attachments.
VoMsgEntity* mainText(VoMsgEntity* root, bool preferHtml);

}  // namespace cli
