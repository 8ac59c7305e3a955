// A mail filter: the message comes on standard input and goes out on standard output. Programs in attachments, also in
// winmail.dat, give way to a notice, and a field tells what was done. Exit 75 asks the mail server to try again:
// nothing is ever lost. gateway/ holds one with rules, quarantine and a log.
#include <algorithm>
#include <cstdio>
#include <string>

#include "vomsg/mail.h"

namespace {

constexpr int kTryAgain = 75;

// By the name and by the first bytes: senders of programs lie about names, and senders of documents do not.
bool isProgram(const vomsg::Part& part) {
  std::string name = part.name().value_or("");
  std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  for (const std::string end : {".exe", ".scr", ".com", ".bat", ".js", ".vbs"}) {
    if (name.size() > end.size() && name.compare(name.size() - end.size(), end.size(), end) == 0) return true;
  }
  char start[4] = {};
  vomsg::Result<vomsg::Stream> content = part.stream();
  const std::size_t count = content ? content->read(start, sizeof start) : 0;
  return count == sizeof start && (std::string(start, 2) == "MZ" || std::string(start, 4) ==
                                                                        "\x7f"
                                                                        "ELF");
}

int complain(const vomsg::Error& error) {
  std::fprintf(stderr, "filter: %s\n", error.text().c_str());
  return kTryAgain;
}

}  // namespace

int main() {
  vomsg::Result<vomsg::Message> read = vomsg::Message::read(0);
  if (!read) std::fprintf(stderr, "filter: passed unread: %s\n", read.error().text().c_str());
  vomsg::Message* const message = read.salvaged();
  if (message == nullptr) return complain(read.error());

  if (read) {
    unsigned removed = 0;
    for (vomsg::Part part : message->attachments()) {
      if (!isProgram(part)) continue;
      const std::string notice = "The program \"" + part.name().value_or("") + "\" was removed.\r\n";
      const vomsg::Status done = part.replaceWithText(notice);
      if (!done) return complain(done.error());
      ++removed;
    }
    vomsg::Status done;
    if (removed > 0) done = message->setHeader("X-Filter", std::to_string(removed) + " removed");
    if (done) done = message->stripSignatures();
    if (!done) return complain(done.error());
  }
  // Damaged mail passes as it came: unedited, its bytes are the source's.
  const vomsg::Status written = message->write(1);
  return written ? 0 : complain(written.error());
}
