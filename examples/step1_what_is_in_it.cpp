#include <iostream>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 2) return 64;
  vomsg::Result<vomsg::Message> message = vomsg::Message::open(argv[1]);
  if (!message) return std::cerr << argv[1] << ": " << message.error().text() << '\n', 65;
  for (vomsg::Part part : message->parts()) {
    std::cout << std::string(2 * part.depth(), ' ') << part.type() << '\n';
  }
}
