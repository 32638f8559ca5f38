#pragma once

#include "tools/velk/context/Context.h"

#include <string>
#include <vector>

namespace velk {

/**
 * Carries out a command line, the program's name left out. What goes wrong is told on standard error; nothing is
 * thrown.
 */
ExitCode runCommandLine(std::vector<std::string> const& arguments, Context& context);

} // namespace velk
