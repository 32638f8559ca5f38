#pragma once

#include "tools/velk/context/Context.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace velk {

/** The command tree: every command with its flags and its texts. */
std::unique_ptr<CLI::App> makeCommandTree(Context& context);

/**
 * Carries out a command line, the program's name left out. What goes wrong is told on standard error; nothing is
 * thrown.
 */
ExitCode runCommandLine(std::vector<std::string> const& arguments, Context& context);

} // namespace velk
