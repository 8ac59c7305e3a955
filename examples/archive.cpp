// Turns a mailbox (an mbox file, a Maildir, a folder of messages) into JSON lines, one a message, in constant memory.
#include <iostream>
#include <nlohmann/json.hpp>

#include "vomsg/mail.h"

using Json = nlohmann::ordered_json;

static Json describe(const vomsg::Message& message) {
  Json json = {{"subject", message.subject()}, {"id", message.messageId()}, {"references", message.references()}};
  if (message.date()) json["date"] = message.date()->iso8601();
  for (const char* field : {"From", "To", "Cc"}) {
    for (const vomsg::Address& each : message.addresses(field)) {
      json[field].push_back({{"name", each.name}, {"address", each.address}});
    }
  }
  json["text"] = message.text().valueOr("");
  for (const vomsg::Part& part : message.attachments()) {
    json["attachments"].push_back({{"type", part.type()}, {"name", part.name().value_or("")}, {"size", part.size()}});
  }
  return json;
}

int main(int argc, char** argv) {
  if (argc != 2) return std::cerr << "usage: archive MAILBOX\n", 64;
  vomsg::Result<vomsg::Mailbox> mailbox = vomsg::Mailbox::open(argv[1]);
  if (!mailbox) return std::cerr << argv[1] << ": " << mailbox.error().text() << '\n', 66;
  int exit = 0;
  for (vomsg::Mailbox::Entry& entry : *mailbox) {
    vomsg::Result<vomsg::Message> message = entry.message();
    if (!message) std::cerr << entry.place() << ": " << message.error().text() << '\n';
    if (!message) exit = 65;
    if (!message.salvaged()) continue;
    std::cout << describe(*message.salvaged()).dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
  }
  return mailbox->status() ? exit : 66;
}
