// The program of README.md, built here against the installed package.
#include <cstdio>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  vomsg::Result<vomsg::Message> message = vomsg::Message::open(argc > 1 ? argv[1] : "");
  if (!message) return std::fprintf(stderr, "%s\n", message.error().text().c_str()), 1;
  for (vomsg::Part part : message->parts()) std::printf("%s, %u bytes\n", part.type().c_str(), part.size());
  for (vomsg::Part part : message->attachments()) {
    if (part.isType("image")) part.replaceWithText("An image was here.\r\n").orThrow();
  }
  message->setSubject("Köln").orThrow();  // encoded as it must be
  message->write("copy.eml").orThrow();   // all else comes out byte for byte
}
