// Parses the messages of a mailbox, through the interface or through the face, for mail_cost_test.py to count.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/mail/Message.h"

int main(int argc, char** argv) {
  if (argc != 3) return 64;
  const bool throughFace = std::string(argv[1]) == "face";
  const long count = std::strtol(argv[2], nullptr, 10);
  unsigned long parts = 0;
  for (long i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    const std::string bytes =
        "From: a" + number + "@example.org\r\nTo: b@example.org\r\nSubject: number " + number +
        "\r\nMIME-Version: 1.0\r\nContent-Type: multipart/alternative; boundary=b" + number + "\r\n\r\n--b" + number +
        "\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nHello\r\n--b" + number +
        "\r\nContent-Type: text/html; charset=utf-8\r\n\r\n<p>Hello</p>\r\n--b" + number + "--\r\n";
    if (throughFace) {
      const vomsg::Result<vomsg::Message> message = vomsg::Message::parse(bytes);
      if (!message) return 65;
      parts += message->message()->countChildEntity();
    } else {
      VoMsgRfc822Message message;
      auto* const source = new VoMsgMemoryResource(const_cast<char*>(bytes.data()), static_cast<unsigned>(bytes.size()),
                                                   1, nullptr, nullptr);
      if (voFailed(message.readFrom(source))) return 65;
      parts += message.countChildEntity();
    }
  }
  std::printf("%lu\n", parts);
}
