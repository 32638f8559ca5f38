#pragma once

#include "tools/velk/ExitCode.h"
#include "tools/velk/Settings.h"

#include <CLI/CLI.hpp>

#include <string>

namespace velk {

struct Context;

/** Says what is wrong in a project file, or that nothing is; asks the driver too when the module is there. */
ExitCode runConfigCheck(std::string const& file, Context& context);

/** Shows the driver's configuration string and the tag addresses that a project file stands for. */
ExitCode runConfigShow(std::string const& file, Context& context);

/** The tag address of a tag of the project file, as far as it is known without the PLC. */
std::string addressText(NamedTag const& tag, Settings const& settings);

void addConfigCommand(CLI::App& app, Context& context);

} // namespace velk
