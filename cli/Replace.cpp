// vomsg replace: gives a part of a message new content.

#include "cli/Command.h"
#include "cli/Editing.h"

namespace cli {

namespace {

const Command kReplace("replace", "Replace the content of a part", [](CLI::App& app) -> Command::Run {
  const auto edits = declareEditing(app);
  const auto part = std::make_shared<std::string>(), file = std::make_shared<std::string>();
  app.add_option("PART", *part, "Number as in `vomsg tree`")->required();
  app.add_option("FILE", *file, "The new content; it is encoded as the part needs it")->required();
  return [edits, part, file] {
    edits->replacePart = {*part + "=" + *file};
    return editFile(*edits);
  };
});

}  // namespace

}  // namespace cli
