// Lists the parts of a message: one line each, indented, with type, file name and decoded size.
#include <cstdio>

#include "vomsg/vomsg.h"

namespace {
int depth(const VoMsgEntity* entity) {
  int levels = 0;
  for (entity = entity->getParentEntity(); entity != nullptr; entity = entity->getParentEntity()) ++levels;
  return levels;
}
}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: list_parts MESSAGE\n"), 64;
  VoMsgRfc822Message message;
  const VoErrorCode code = message.readFrom(new VoMsgFileResource(argv[1], nullptr, nullptr));
  if (voFailed(code)) std::fprintf(stderr, "%s: read with code %08x, showing what was read\n", argv[1], code);

  VoMsgEntityIterator parts(&message);
  for (VoMsgEntity* part = parts.first(); part != nullptr; part = parts.next()) {
    const char* type = part->getContentType();
    const char* name = part->getFileName("utf-8");
    std::printf("%*s%s", 2 * depth(part), "", type ? type : "text/plain");
    if (name != nullptr) std::printf(" \"%s\"", name);
    if (!part->isMultipartEntity()) std::printf(", %u bytes", part->getContentSize());
    std::printf("\n");
  }
  return voFailed(code) ? 65 : 0;
}
