#include <fstream>
#include <iostream>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 3) return 64;
  const vomsg::Message message = vomsg::Message::open(argv[1]).orThrow();
  unsigned number = 0;
  for (const vomsg::Part& part : message.attachments()) {
    const std::string path = std::string(argv[2]) + "/" + std::to_string(++number) + "_" + part.safeName();
    std::ofstream(path, std::ios::binary) << part.bytes().orThrow();
    std::cout << part.type() << ", " << part.size() << " bytes: " << path << '\n';
  }
}
