// Adds a disclaimer to a message, and takes off the signatures that this breaks.
#include <cstdio>

#include "vomsg/vomsg.h"

int main(int argc, char** argv) {
  if (argc != 4) return std::fprintf(stderr, "usage: add_disclaimer MESSAGE TEXT RESULT\n"), 64;
  VoMsgRfc822Message message;
  if (voFailed(message.readFrom(new VoMsgFileResource(argv[1], nullptr, nullptr)))) return 65;

  // Into the text, HTML included; what has no place for it is wrapped. The message owns the text once it has taken it.
  auto* const text = new VoMsgFileResource(argv[2], nullptr, nullptr);
  const int option = kVoDisclaimerBody | kVoDisclaimerHtml | kVoDisclaimerWrapOnRefusal;
  VoErrorCode code = message.insertDisclaimerMessage(kVoDisclaimerBottom, text, option, "utf-8", nullptr);
  if (voFailed(code)) {
    std::fprintf(stderr, "%s: no disclaimer was added (%08x)\n", argv[1], code);
    delete text;
    return 65;
  }
  message.stripSignaturePart();

  VoMsgFileResource result(argv[3], nullptr, nullptr);
  code = message.writeTo(&result);
  if (voFailed(code)) std::fprintf(stderr, "%s: not written (%08x)\n", argv[3], code);
  return voFailed(code) ? 73 : 0;
}
