// vomsg headers: the header fields of a message or of one of its parts, decoded to UTF-8.

#include <memory>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/EntityWalk.h"
#include "cli/Failure.h"
#include "cli/Messages.h"
#include "cli/Printable.h"
#include "vomsg/header/VoMsgHeaderField.h"

namespace cli {

namespace {

struct Options {
  std::string file;
  unsigned part = 0;
};

int showHeaders(const Options& options, MessageInput& input) {
  const OpenedMessage opened = openMessage(input.place, std::move(input.source));
  print(titleOf(input));
  const VoMsgEntity* entity = entityByNumber(opened.message.get(), options.part);
  if (entity == nullptr) checkReading(opened, input.place);
  if (entity == nullptr) throw Failure(kUsage, "there is no part " + std::to_string(options.part));
  const auto shown = [](const char* text) { return text != nullptr ? printable(text) : std::string(); };
  for (unsigned i = 0; i < entity->countHeaders(); ++i) {
    VoMsgHeaderField* field = entity->getHeaderAt(i);
    if (field == nullptr) continue;
    std::string line = inColour(Colour::name, shown(field->getName())) + ": " + shown(field->getFieldValue("utf-8"));
    for (unsigned p = 0; p < field->countParameter(); ++p) {
      line += "; " + shown(field->getParameterNameAt(p)) + "=" + shown(field->getParameterValueAt(p, "utf-8"));
    }
    print(line + "\n");
  }
  checkReading(opened, input.place);
  return kOk;
}

const Command kHeaders("headers", "Print the header fields, decoded to UTF-8", [](CLI::App& app) -> Command::Run {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->file, "The message; - for the standard input")->required();
  app.add_option("--part", options->part, "Of the part with that number in `vomsg tree`, 0 for the message");
  return [options] {
    return forEachMessageIn(options->file, [&](MessageInput& input) { return showHeaders(*options, input); });
  };
});

}  // namespace

}  // namespace cli
