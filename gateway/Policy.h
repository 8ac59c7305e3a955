// What the administrator wants done to mail, read from one TOML file. See policy.toml for the file, docs/gateway.md for
// its meaning.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "vomsg/anomaly/VoMsgAnomaly.h"
#include "vomsg/mail.h"

namespace gateway {

// What happens to mail that could not be read or treated.
enum class OnFailure { open, closed, reject };  // passes as it came; is tried again later; is refused

struct Attachment {
  std::vector<std::string> names;       // patterns; empty: any
  std::vector<std::string> types;       // patterns over the declared type
  std::vector<std::string> firstBytes;  // what the content begins with, one of them
  bool isAsked = false;
};

struct Conditions {
  std::string direction;  // "in", "out", "inside"; empty: any
  std::vector<std::string> senders, recipients;
  bool anyRecipient = false;  // else every one has to match
  std::uint64_t largerThan = 0;
  std::optional<std::uint64_t> smallerThan;
  std::string field;  // a name; empty: not asked
  std::vector<std::string> fieldValues;
  Attachment attachment;
  std::optional<VoMsgAnomalyLevel> anomaly;  // something at least as odd
  std::vector<VoErrorCode> codes;            // of the reading; a rule without them is for mail that was read
};

enum class Do {
  addField,
  setField,
  removeField,
  disclaimer,
  removeAttachments,
  replaceAttachments,
  openWinmail,
  stripSignatures,
  tag,
  quarantine,
  reject,
  pass
};

struct Action {
  Do what = Do::pass;
  std::string name;  // of a field; a folder
  std::string text;  // a value, a notice, a disclaimer, a reason
  vomsg::Disclaimer disclaimer;
};

struct Rule {
  std::string name;
  Conditions when;
  std::vector<Action> actions;
  bool goesOn = false;
};

struct Policy {
  vomsg::Settings settings;
  std::uint64_t maxMessage = 0;  // bytes; 0: what the library takes
  std::vector<std::string> insideNetworks, insideDomains;
  std::map<VoErrorCode, OnFailure> onCode;
  OnFailure onDamage = OnFailure::open;       // any other code of the reading
  OnFailure onEdit = OnFailure::closed;       // an action failed
  OnFailure onDangerous = OnFailure::closed;  // no rule hit, and content may be hidden
  std::string counters;                       // a Prometheus text file; empty: none
  std::vector<Rule> rules;
};

struct Mistake {
  unsigned line, column;
  std::string text;
};

// Reads a policy. With mistakes the policy is not to be used.
Policy loadPolicy(const std::string& path, std::vector<Mistake>& mistakes);

// Whether `text` is what `pattern` says, without case: "*" stands for any characters, "?" for one byte.
bool matches(const std::string& pattern, const std::string& text);
bool matchesOne(const std::vector<std::string>& patterns, const std::string& text);
// Whether an address lies in one of the networks: "192.0.2.0/24", "2001:db8::/32", or a single address.
bool liesInOne(const std::vector<std::string>& networks, const std::string& address);

}  // namespace gateway
