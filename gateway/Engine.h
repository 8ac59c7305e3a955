// One message through the policy: which rules hit, what they did, what becomes of the mail.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "gateway/Policy.h"
#include "vomsg/mail.h"

namespace gateway {

struct Delivery {
  std::string sender;
  std::vector<std::string> recipients;
  std::string client;  // its address, where it is known
  std::string id;      // what the mail server calls the message
};

enum class Verdict { pass, edited, unread, quarantined, rejected, tryAgain };
const char* nameOf(Verdict verdict);

struct Outcome {
  Verdict verdict = Verdict::pass;
  VoErrorCode code = kVoSuccess;          // of the reading or of the action that failed
  std::string reason;                     // for the sender of refused mail, or for the log
  std::vector<std::string> rules;         // that hit, in order
  std::optional<vomsg::Message> message;  // what goes on: edited, or exactly what came; none where nothing goes on
  std::uint64_t bytes = 0;                // of the message as it came
};

// Applies the policy. All actions of a message are done, or none: they are done to a copy, which is dropped when one
// fails.
Outcome treat(const Policy& policy, const Delivery& delivery, vomsg::Result<vomsg::Message> read);

}  // namespace gateway
