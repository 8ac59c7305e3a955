// Lists what is attached to a message, in winmail.dat and in its text too: type, decoded size, a name safe for a file.
#include <cstdio>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: list_attachments MESSAGE\n"), 64;
  const vomsg::Result<vomsg::Message> message = vomsg::Message::open(argv[1]);
  if (!message) return std::fprintf(stderr, "%s: %s\n", argv[1], message.error().text().c_str()), 65;
  for (const vomsg::Part& part : message->attachments()) {
    std::printf("%s %u %s\n", part.type().c_str(), part.size(), part.safeName().c_str());
  }
}
