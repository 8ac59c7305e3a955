#include <iostream>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 2) return 64;
  const vomsg::Message message = vomsg::Message::open(argv[1]).orThrow();
  std::cout << "Subject: " << message.subject() << '\n';
  for (const vomsg::Address& each : message.from()) std::cout << "From: " << each.name << ", " << each.address << '\n';
  if (message.date()) std::cout << "Date: " << message.date()->iso8601() << '\n';
  std::cout << message.text().orThrow();
}
