// vomsg set: sets and removes header fields.

#include "cli/Command.h"
#include "cli/Editing.h"

namespace cli {

namespace {

const Command kSet("set", "Set header fields", [](CLI::App& app) -> Command::Run {
  const auto edits = declareEditing(app);
  app.add_option("NAME=VALUE", edits->setHeader, "A field and its value in UTF-8");
  app.add_option("--remove", edits->removeHeader, "Remove all fields of that name, before others are set")
      ->type_name("NAME")
      ->allow_extra_args(false);
  app.add_option("--part", edits->headerPart, "Of the part with that number in `vomsg tree`, 0 for the message")
      ->type_name("PART");
  return [edits] { return editFile(*edits); };
});

}  // namespace

}  // namespace cli
