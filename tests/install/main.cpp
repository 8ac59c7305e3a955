// The program of README.md, built here against the installed package.
#include <cstdio>

#include "vomsg/vomsg.h"

int main(int argc, char** argv) {
  VoMsgRfc822Message message;
  const VoErrorCode code = message.readFrom(new VoMsgFileResource(argc > 1 ? argv[1] : "", nullptr, nullptr));
  if (voFailed(code)) return 1;
  VoMsgEntityIterator parts(&message);
  for (VoMsgEntity* part = parts.first(); part != nullptr; part = parts.next()) {
    const char* type = part->getContentType();
    std::printf("%s, %u bytes\n", type ? type : "text/plain", part->getContentSize());
  }
  message.setHeaderValue("Subject", "Köln", "utf-8", "iso-8859-1");  // encoded as it must be
  VoMsgFileResource copy("copy.eml", nullptr, nullptr);
  return voFailed(message.writeTo(&copy)) ? 1 : 0;  // all else comes out byte for byte
}
