// Puts a notice in the place of each attachment of a name, wherever it hangs; all else comes out byte for byte.
#include <cstdio>
#include <string_view>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 4) return std::fprintf(stderr, "usage: replace_attachment MESSAGE NAME RESULT\n"), 64;
  vomsg::Result<vomsg::Message> message = vomsg::Message::open(argv[1]);
  if (!message) return std::fprintf(stderr, "%s: %s\n", argv[1], message.error().text().c_str()), 65;

  for (vomsg::Part part : message->attachments()) {
    if (part.name().value_or("") != argv[2]) continue;
    const std::string notice = std::string("The attachment \"") + argv[2] + "\" was removed.\r\n";
    const vomsg::Status done = part.replaceWithText(notice);
    if (!done) return std::fprintf(stderr, "%s: %s\n", argv[2], done.error().text().c_str()), 65;
  }
  const vomsg::Status written = message->write(argv[3]);
  if (!written) std::fprintf(stderr, "%s: %s\n", argv[3], written.error().text().c_str());
  return written ? 0 : 73;
}
