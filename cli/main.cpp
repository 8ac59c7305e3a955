// The program `vomsg`: parses the arguments, runs the subcommand, turns failures into sentences and exit codes.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Limits.h"
#include "cli/Messages.h"
#include "vomsg/foundation/VoMsgProcess.h"

namespace {

// "vomsg 1.100.0 (libvomsg 1.100.0.0000)": the library says its own, behind its module's name.
std::string version() {
  char text[64];
  voMsgGetVersion(text, sizeof text);
  const std::string library = text;
  return "vomsg " VOMSG_PROGRAM_VERSION " (libvomsg " + library.substr(library.rfind(' ') + 1) + ")";
}

// Insertions, deletions and changes of a character that lead from one name to the other.
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = std::exchange(row[j], std::min({row[j] + 1, row[j - 1] + 1, changed}));
    }
  }
  return row.back();
}

// The first argument that is no option stands where a command belongs. Failure when there is no such command.
void checkCommand(const CLI::App& app, const std::string& name) {
  std::string nearest;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_name() == name) return;
    if (nearest.empty() || distance(name, command->get_name()) < distance(name, nearest)) nearest = command->get_name();
  }
  throw cli::Failure(cli::kUsage,
                     "there is no command \"" + name.substr(0, 60) + "\"; the nearest is \"" + nearest + "\"");
}

int run(int argc, char** argv) {
  CLI::App app("Takes mail messages apart, shows them, edits them and writes them back.", "vomsg");
  app.require_subcommand(1);
  app.fallthrough();
  app.get_formatter()->column_width(36);
  app.set_version_flag("--version", version());
  cli::addLimitOptions(app);
  cli::addMailboxOptions(app);
  cli::Command::Run chosen;
  cli::Command::declareAll(app, chosen);
  if (argc > 1 && argv[1][0] != '-') checkCommand(app, argv[1]);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? cli::kOk : cli::kUsage;
  }
  const int exit = chosen();
  cli::flushOutput();
  return exit;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const cli::Failure& failure) {
    std::fflush(stdout);  // what was shown before comes first
    cli::complain(failure.what());
    return failure.exit();
  } catch (const std::bad_alloc&) {
    cli::complain("there is not enough memory");
    return cli::kBadData;
  } catch (const std::exception& error) {
    cli::complain(error.what());
    return cli::kBadData;
  }
}
