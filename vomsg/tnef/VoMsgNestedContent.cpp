// Until embedded blocks are read, the texts that hold them stay leaves.
#include "vomsg/entity/VoMsgNestedContent.h"

namespace vomsg::detail {

VoErrorCode scanEmbeddedBlocks(VoMsgEntity*) { return kVoNoContent; }
VoErrorCode scanEpilogue(VoMsgEntity*, std::uint32_t, std::uint32_t) { return kVoNoContent; }
VoMsgEntity* copyEmbeddedTree(VoMsgEntity*) { return nullptr; }

}  // namespace vomsg::detail
