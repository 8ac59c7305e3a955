// Writes a message with what was in its winmail.dat as ordinary attachments, for those whose mail program shows none.
#include <cstdio>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: open_winmail MESSAGE RESULT\n"), 64;
  vomsg::Result<vomsg::Message> message = vomsg::Message::open(argv[1]);
  if (!message) return std::fprintf(stderr, "%s: %s\n", argv[1], message.error().text().c_str()), 65;

  unsigned count = 0;
  vomsg::Status done = vomsg::openWinmail(*message, &count);
  if (done) done = message->write(argv[2]);
  if (!done) return std::fprintf(stderr, "%s: %s\n", argv[1], done.error().text().c_str()), 65;
  std::printf("opened: %u\n", count);
}
