// What all commands that write a message have in common.
#pragma once

#include <string>

#include "cli/Input.h"
#include "vomsg/foundation/VoErrorCode.h"

namespace cli {

// Failure (the one that the code means) when `code` is none of success. `subject` opens its sentence.
void check(VoErrorCode code, const std::string& subject);

// Reads a message that is going to be changed. A malformed one, one with broken TNEF data and a fragment are whole in
// the tree, so they are taken too, with the sentence on stderr. Failure for every other code.
OpenedMessage openForEditing(const std::string& file);

// Writes the message to `out`, which may be the file `in` that it was read from. Failure: nothing was written.
void writeMessage(VoMsgMailMessage& message, const std::string& in, const std::string& out);

}  // namespace cli
