// What all commands that write a message have in common.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "cli/Messages.h"
#include "vomsg/foundation/VoErrorCode.h"

namespace cli {

// Failure (the one that the code means) when `code` is none of success. `subject` opens its sentence.
void check(VoErrorCode code, const std::string& subject);

// Reads a message that is going to be changed. A malformed one, one with broken TNEF data and a fragment are whole in
// the tree, so they are taken too, with the sentence on stderr. Failure for every other code.
OpenedMessage openForEditing(const std::string& file);

// Writes the message to `out`, which may be the file `in` that it was read from. Failure: nothing was written, as when
// `in` is one message of a mailbox and `out` that mailbox.
void writeMessage(VoMsgMailMessage& message, const std::string& in, const std::string& out);

// Edits of one message, in the order in which they are made. Numbers of parts mean the tree as it was read.
struct Edits {
  std::string in, out;
  std::vector<std::string> removeHeader;  // names
  std::vector<std::string> setHeader;     // NAME=VALUE, in UTF-8
  unsigned headerPart = 0;                // whose fields those are
  std::vector<std::string> replacePart;   // NUMBER=FILE
  std::vector<std::string> removePart;    // numbers
  std::vector<std::string> attach;        // files
  std::string attachType;                 // their content type; "": that of unknown data
};
// Declares IN and OUT.
std::shared_ptr<Edits> declareEditing(CLI::App& app);
// Reads, edits and writes. Failure: nothing was written.
int editFile(const Edits& edits);

}  // namespace cli
