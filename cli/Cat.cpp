// vomsg cat: the content of one part, to the standard output.

#include <memory>

#include "cli/Command.h"
#include "cli/EntityWalk.h"
#include "cli/Failure.h"
#include "cli/Messages.h"
#include "cli/Output.h"

namespace cli {

namespace {

struct Options {
  std::string file;
  unsigned part = 0;
  bool raw = false;
};

int cat(const Options& options) {
  const OpenedMessage opened = openMessage(options.file, openOne(options.file));
  VoMsgEntity* const part = entityByNumber(opened.message.get(), options.part);
  const std::string subject = options.file + ", part " + std::to_string(options.part);
  if (part == nullptr) {
    checkReading(opened, options.file);
    throw Failure(kUsage, subject + ": there is no such part");
  }
  OutputFile output("-");
  int result = 0;
  if (options.raw)
    part->getRawContent(result, &output);
  else
    part->getContent(result, &output);
  const auto code = static_cast<VoErrorCode>(result);
  // An empty body is no failure: there is nothing to show.
  const bool isEmpty = code == kVoNoContent && !part->isMultipartEntity();
  if (voFailed(code) && !isEmpty && code != kVoWriteFailed) throw failureOf(code, subject);
  output.commit();
  checkReading(opened, options.file);
  return kOk;
}

const Command kCat("cat", "Print the content of one part, decoded", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->file, "The message; - for the standard input")->required();
  app.add_option("PART", options->part, "Number as in `vomsg tree`")->required();
  app.add_flag("--raw", options->raw, "As it stands in the message");
  return [options] { return cat(*options); };
});

}  // namespace

}  // namespace cli
