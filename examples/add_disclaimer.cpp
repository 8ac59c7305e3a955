// Adds a disclaimer to a message, and takes off the signatures that this breaks.
#include <cstdio>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 4) return std::fprintf(stderr, "usage: add_disclaimer MESSAGE TEXT RESULT\n"), 64;
  vomsg::Result<vomsg::Message> message = vomsg::Message::open(argv[1]);
  if (!message) return std::fprintf(stderr, "%s: %s\n", argv[1], message.error().text().c_str()), 65;

  // Into the text, HTML included; what has no place for it is wrapped.
  vomsg::Status done = message->addDisclaimer({std::string(argv[2]) + "\r\n"});
  if (done) done = message->stripSignatures();
  if (done) done = message->write(argv[3]);
  if (!done) std::fprintf(stderr, "%s: %s\n", argv[1], done.error().text().c_str());
  return done ? 0 : 65;
}
