#include "cli/Command.h"

#include <cstring>

namespace cli {

namespace {
// Constant-initialised, so it is there before the first Command links itself in.
constinit const Command* gFirst = nullptr;
}  // namespace

Command::Command(const char* name, const char* description, Run (*declare)(CLI::App&))
    : mName(name), mDescription(description), mDeclare(declare), mNext(gFirst) {
  gFirst = this;
}

void Command::declareAll(CLI::App& app, Run& chosen) {
  std::vector<const Command*> all;
  for (const Command* command = gFirst; command != nullptr; command = command->mNext) all.push_back(command);
  std::sort(all.begin(), all.end(),
            [](const Command* a, const Command* b) { return std::strcmp(a->mName, b->mName) < 0; });
  for (const Command* command : all) {
    CLI::App* sub = app.add_subcommand(command->mName, command->mDescription);
    sub->callback([&chosen, run = command->mDeclare(*sub)] { chosen = run; });
  }
}

}  // namespace cli
