// vomsg remove: takes parts out of a message.

#include "cli/Command.h"
#include "cli/Editing.h"

namespace cli {

namespace {

const Command kRemove("remove", "Remove parts of a message", [](CLI::App& app) -> Command::Run {
  const auto edits = declareEditing(app);
  app.add_option("PART", edits->removePart, "Number as in `vomsg tree`")->required();
  return [edits] { return editFile(*edits); };
});

}  // namespace

}  // namespace cli
