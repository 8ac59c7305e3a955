// A subcommand of the program. Its source defines one Command at namespace scope, and nothing else has to name it:
//   const Command kTree("tree", "print the entity tree", [](CLI::App& app) -> Command::Run { ... });
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace cli {

class Command {
 public:
  using Run = std::function<int()>;  // the exit code; may throw Failure

  // `declare` adds the options to the subcommand and returns what runs it with them.
  Command(const char* name, const char* description, Run (*declare)(CLI::App&));

  // Declares every subcommand, by name. `chosen` becomes the one that the arguments select.
  static void declareAll(CLI::App& app, Run& chosen);

 private:
  const char* mName;
  const char* mDescription;
  Run (*mDeclare)(CLI::App&);
  const Command* mNext;
};

}  // namespace cli
