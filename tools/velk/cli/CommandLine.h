#pragma once

#include "tools/velk/context/Context.h"

#include <string>
#include <vector>

namespace velk {

/**
 * Runs a command line, given without the program's name. Failures are printed on standard error; nothing is thrown.
 */
ExitCode runCommandLine(std::vector<std::string> const& arguments, Context& context);

} // namespace velk
