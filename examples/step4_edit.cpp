#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 3) return 64;
  vomsg::Message message = vomsg::Message::open(argv[1]).orThrow();
  message.setSubject("Geprüft: " + message.subject()).orThrow();
  for (vomsg::Part part : message.parts()) {
    if (part.isType("image")) part.remove().orThrow();
  }
  message.write(argv[2]).orThrow();
}
