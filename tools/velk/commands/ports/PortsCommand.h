#pragma once

#include "tools/velk/context/ExitCode.h"

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

/** Lists the serial ports of this machine. */
ExitCode runPorts(bool json, Context& context);

void addPortsCommand(CLI::App& app, Context& context);

} // namespace velk
