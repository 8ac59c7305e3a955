// The library's process-wide limits as options of the program.
#pragma once

#include <CLI/CLI.hpp>

namespace cli {

// Adds an option for each limit, with the library's name for it; parsing sets the limit.
void addLimitOptions(CLI::App& app);

}  // namespace cli
