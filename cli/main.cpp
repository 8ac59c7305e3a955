// The program `vomsg`: parses the arguments, runs the subcommand, turns failures into sentences and exit codes.

#include <CLI/CLI.hpp>
#include <new>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Limits.h"
#include "vomsg/foundation/VoMsgProcess.h"

namespace {

std::string version() {
  char text[64];
  voMsgGetVersion(text, sizeof text);
  return text;
}

int run(int argc, char** argv) {
  CLI::App app("Takes mail messages apart, shows them, edits them and writes them back.", "vomsg");
  app.require_subcommand(1);
  app.fallthrough();
  app.get_formatter()->column_width(36);
  app.set_version_flag("--version", version());
  cli::addLimitOptions(app);
  cli::Command::Run chosen;
  cli::Command::declareAll(app, chosen);
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
