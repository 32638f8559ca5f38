#pragma once

#include "tools/velk/context/ExitCode.h"

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

/** Passes lines to the module's own console until the input ends. */
ExitCode runConsole(Context& context);

void addConsoleCommand(CLI::App& app, Context& context);

} // namespace velk
