#include <iostream>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 2) return 64;
  vomsg::Mailbox mailbox = vomsg::Mailbox::open(argv[1]).orThrow();
  for (vomsg::Mailbox::Entry& entry : mailbox) {
    vomsg::Result<vomsg::Message> message = entry.message();
    std::cout << entry.number() << ": " << (message ? message->subject() : message.error().text()) << '\n';
  }
  mailbox.status().orThrow();
}
