// Where treated mail goes: to a command such as sendmail, to an SMTP server on this machine, or to standard output.
#pragma once

#include <string>
#include <vector>

#include "gateway/Engine.h"

namespace gateway {

// The exit codes that a mail server understands (<sysexits.h>).
enum Exit : int { kDone = 0, kUsage = 64, kRefused = 69, kTryAgain = 75, kBadPolicy = 78 };

struct NextHop {
  std::vector<std::string> command;  // with its arguments
  std::string smtpHost;              // a loopback address
  std::string smtpPort;
};

// Hands the message on. The exit code for the mail server: the command's own, kTryAgain for whatever is temporary. It
// is 0 only when the next hop has taken the whole message. `reason` says what went wrong.
int handOn(const NextHop& hop, const Delivery& delivery, const vomsg::Message& message, std::string& reason);

}  // namespace gateway
