// Lists the parts of a message: one line each, indented, with type, file name and decoded size.
#include <cstdio>

#include "vomsg/mail.h"

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: list_parts MESSAGE\n"), 64;
  vomsg::Result<vomsg::Message> read = vomsg::Message::open(argv[1]);
  if (!read) std::fprintf(stderr, "%s: %s\n", argv[1], read.error().text().c_str());
  const vomsg::Message* message = read.salvaged();  // damaged mail is shown as far as it was read
  if (message == nullptr) return 66;

  for (vomsg::Part part : message->parts()) {
    std::printf("%*s%s", static_cast<int>(2 * part.depth()), "", part.type().c_str());
    if (part.name()) std::printf(" \"%s\"", part.name()->c_str());
    if (!part.isMultipart()) std::printf(", %u bytes", part.size());
    std::printf("\n");
  }
  return read ? 0 : 65;
}
