// vomsg rewrite: reads a message and writes it back, with edits in between.

#include <memory>

#include "cli/Command.h"
#include "cli/Editing.h"

namespace cli {

namespace {

const Command kRewrite(
    "rewrite", "Read a message and write it back, edited as asked", [](CLI::App& app) -> Command::Run {
      const auto edits = declareEditing(app);
      const auto add = [&app](const char* name, std::vector<std::string>& values, const char* form, const char* help) {
        app.add_option(name, values, help)->type_name(form)->allow_extra_args(false);
      };
      add("--set-header", edits->setHeader, "NAME=VALUE", "Set a field of the message; VALUE is UTF-8");
      add("--remove-header", edits->removeHeader, "NAME", "Remove all fields of that name, before others are set");
      add("--replace-part", edits->replacePart, "INDEX=FILE", "Replace the content of a part (number as in `tree`)");
      add("--remove-part", edits->removePart, "INDEX", "Remove a part (number as in `tree`)");
      add("--attach", edits->attach, "FILE", "Add a file as the last part");
      return [edits] { return editFile(*edits); };
    });

}  // namespace

}  // namespace cli
