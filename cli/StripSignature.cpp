// vomsg strip-signature: removes the signatures of a message that is going to be changed.

#include <memory>

#include "cli/Command.h"
#include "cli/Editing.h"
#include "cli/EntityWalk.h"
#include "cli/Failure.h"
#include "cli/Messages.h"

namespace cli {

namespace {

struct Options {
  std::string in, out;
};

// The library takes signatures off what was edited and leaves valid ones alone. Here they are to go in any case, so
// every signed part is declared edited, by giving it the type that it has.
void touchSignedParts(VoMsgEntity* message, const std::string& file) {
  EntityWalk walk(message);
  while (walk.next()) {
    if (!walk.entity()->isContentType("multipart", "signed")) continue;
    check(walk.entity()->setHeaderValue("Content-Type", "multipart/signed", "us-ascii", nullptr), file);
  }
}

int stripSignature(const Options& options) {
  const OpenedMessage opened = openMessage(options.in, openWhole(options.in));
  check(opened.code, options.in);
  touchSignedParts(opened.message.get(), options.in);
  check(opened.message->stripSignaturePart(), options.in);
  writeMessage(*opened.message, options.in, options.out);
  return kOk;
}

const Command kStripSignature(
    "strip-signature", "Remove the signatures of a message", [](CLI::App& app) -> Command::Run {
      const auto options = std::make_shared<Options>();
      app.add_option("IN", options->in, "The message; - for the standard input")->required();
      app.add_option("OUT", options->out, "The result; - for the standard output; may be IN")->required();
      return [options] { return stripSignature(*options); };
    });

}  // namespace

}  // namespace cli
