// The messages that the arguments of a command name: files, mailboxes, folders of either, the standard input.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/Input.h"

namespace cli {

struct MessageInput {
  std::string place;  // a path, "PATH#n" in a mailbox, "-"
  std::unique_ptr<VoMsgResourceLocator> source;
  bool several;  // there may be more than this one
};
// "== PLACE" and a line end where several messages are shown, else nothing.
std::string titleOf(const MessageInput& input);
using MessageWork = std::function<int(MessageInput& input)>;

// Adds the options that say how mailboxes are read, and with how many processes.
void addMailboxOptions(CLI::App& app);

// Runs `work` on each message: those of an mbox file and of a Maildir, all files of another folder by name, the
// standard input as one. A Failure is told and the work goes on with the next message; the result is the first exit
// code that is not 0. With several processes the output comes in the same order as with one.
// `onResult` is told each exit code. With `inOne`, `work` is done in this very process, whatever -j says.
int forEachMessage(const std::vector<std::string>& arguments, const MessageWork& work,
                   const std::function<void(int)>& onResult = {}, bool inOne = false);

// The same for a command that takes one FILE: a mailbox, but no other folder. Failure: kNoInput.
int forEachMessageIn(const std::string& file, const MessageWork& work);

// The one message that `file` names: "FILE#n" is the n-th of a mailbox, unless a file of that name exists. What is no
// mailbox, or is to be taken as one message, is the message itself. Failure: kNoInput, kUsage where a number is
// missing.
std::unique_ptr<VoMsgResourceLocator> openOne(const std::string& file);
// The same for a command that writes, and for the standard input: without a number a mailbox is one message.
std::unique_ptr<VoMsgResourceLocator> openWhole(const std::string& file);

}  // namespace cli
