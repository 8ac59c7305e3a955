// Where the subcommands get their data from: files, folders and the standard input.
#pragma once

#include <functional>
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
// Reads the message in a file, which may also be a bare TNEF stream. Failure: kNoInput.
OpenedMessage openMessage(const std::string& file);
// The same from its data, which the message takes over; `file` is its name for complaints.
OpenedMessage openMessage(const std::string& file, std::unique_ptr<VoMsgResourceLocator> source);

// The files that the arguments name: a folder stands for the regular files in it and below it, by name.
// Failure: kNoInput for a folder that cannot be read.
std::vector<std::string> expandFolders(const std::vector<std::string>& arguments);

// Runs `work` on each file, with progress on stderr. A Failure is told and the work goes on with the next file; the
// result is the first exit code that is not 0.
int forEachFile(const std::vector<std::string>& arguments,
                const std::function<int(const std::string& file, bool several)>& work);

}  // namespace cli
