#include <iostream>

#include "vomsg/mail.h"

int main() {
  vomsg::Result<vomsg::Message> read = vomsg::Message::read(0);
  vomsg::Message* const message = read.salvaged();
  vomsg::Status done = message != nullptr ? vomsg::Status() : read.error();
  if (read) done = message->setHeader("X-Seen", "yes");
  if (done) done = message->write(1);
  if (!done) std::cerr << "filter: " << done.error().text() << '\n';
  return done ? 0 : 75;
}
