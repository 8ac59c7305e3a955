// Saves the attachments of a message in the current folder, as 1_NAME, 2_NAME, ... with names that are safe there: what
// a mail calls its attachments is never used as a path.
#include <cstdio>
#include <fstream>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: save_attachments MESSAGE\n"), 64;
  const vomsg::Result<vomsg::Message> message = vomsg::Message::open(argv[1]);
  if (!message) return std::fprintf(stderr, "%s: %s\n", argv[1], message.error().text().c_str()), 65;

  int number = 0;
  int exit = 0;
  for (const vomsg::Part& part : message->attachments()) {
    // A nested message is an attachment too; its bytes are its carrier's content.
    const vomsg::Result<std::string> bytes = part.bytes();
    const std::string path = std::to_string(++number) + "_" + part.safeName();
    if (bytes && std::ofstream(path, std::ios::binary) << *bytes) {
      std::printf("%s\n", path.c_str());
    } else {
      std::fprintf(stderr, "%s: %s\n", path.c_str(), bytes ? "not written" : bytes.error().text().c_str());
      exit = 65;
    }
  }
  return exit;
}
