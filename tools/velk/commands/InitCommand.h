#pragma once

#include "tools/velk/context/ExitCode.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace velk {

struct Context;

struct InitOptions {
    std::optional<std::string> name; ///< of the station
    bool force = false;              ///< write over a file that is there
};

/** Writes a commented project file from the flags; asks on a terminal for what they leave out. */
ExitCode runInit(InitOptions const& options, Context& context);

void addInitCommand(CLI::App& app, Context& context);

} // namespace velk
