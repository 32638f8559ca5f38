#pragma once

#include "tools/velk/commands/simulate/PlcOptions.h"
#include "tools/velk/context/ExitCode.h"

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

/** Plays the PLCs of a line, until the user wants the end or the time is over. */
ExitCode runPlc(PlcOptions const& options, Context& context);

void addPlcCommand(CLI::App& app, Context& context);

} // namespace velk
