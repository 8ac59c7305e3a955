// Where the subcommands get their data from: files, folders and the standard input.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vomsg/entity/VoMsgMailMessage.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"

namespace cli {

// The data of a file, or of the standard input for "-". What is no regular file is read into memory first.
// Failure: kNoInput, for a folder too.
std::unique_ptr<VoMsgResourceLocator> openInput(const std::string& file);
// The whole content. Failure: kNoInput.
std::string readAll(const VoMsgResourceLocator& resource, const std::string& file);

struct OpenedMessage {
  std::unique_ptr<VoMsgMailMessage> message;
  VoErrorCode code;  // of readFrom; the tree is usable even when it is a failure
};
// Failure for a message that could be read in part only. Commands that show something call it last.
void checkReading(const OpenedMessage& opened, const std::string& file);
// Reads a message, which may also be a bare TNEF stream, from its data, which the message takes over; `file` is its
// name for complaints. Failure: kNoInput.
OpenedMessage openMessage(const std::string& file, std::unique_ptr<VoMsgResourceLocator> source);

// The files that the arguments name: a folder stands for the regular files in it and below it, by name, a Maildir for
// its messages.
// Failure: kNoInput for a folder that cannot be read.
std::vector<std::string> expandFolders(const std::vector<std::string>& arguments);

}  // namespace cli
