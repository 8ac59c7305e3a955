// Saves the attachments of a message as attachment-1, attachment-2, ... in the current folder. The names that a mail
// gives to its attachments are printed, and never used as paths.
#include <cstdio>
#include <string>

#include "vomsg/vomsg.h"

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: save_attachments MESSAGE\n"), 64;
  VoMsgRfc822Message message;
  if (voFailed(message.readFrom(new VoMsgFileResource(argv[1], nullptr, nullptr)))) return 65;

  int saved = 0;
  int failed = 0;
  VoMsgEntityIterator parts(&message);
  for (VoMsgEntity* part = parts.first(); part != nullptr; part = parts.next()) {
    const char* name = part->getFileName("utf-8");
    if (name == nullptr || part->isMultipartEntity()) continue;
    const std::string path = "attachment-" + std::to_string(saved + 1);
    VoMsgFileResource target(path.c_str(), name, "utf-8");
    int code = 0;  // the content goes to the target, decoded
    if (part->getContent(code, &target) != nullptr && !voFailed(code)) {
      std::printf("%s: \"%s\"\n", path.c_str(), name);
      ++saved;
    } else {
      ++failed;
    }
  }
  return failed == 0 ? 0 : 65;
}
