// vomsg attach: adds files to a message.

#include "cli/Command.h"
#include "cli/Editing.h"

namespace cli {

namespace {

const Command kAttach("attach", "Add files to a message as parts", [](CLI::App& app) -> Command::Run {
  const auto edits = declareEditing(app);
  app.add_option("FILE", edits->attach, "What to attach, under the file's own name")->required();
  app.add_option("--type", edits->attachType, "Its content type (application/octet-stream)")->type_name("TYPE");
  return [edits] { return editFile(*edits); };
});

}  // namespace

}  // namespace cli
