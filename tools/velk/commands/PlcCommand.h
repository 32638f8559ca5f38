#pragma once

#include "tools/velk/ExitCode.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

namespace velk {

struct Context;

struct PlcOptions {
    std::string project;              ///< description of the line, a TOML file
    std::string link;                 ///< a symbolic link to the pseudo-terminal; empty for none
    std::int64_t forMicroseconds = 0; ///< 0: until the user wants the end
    bool quiet = false;
};

/** Plays the PLCs of a line on a pseudo-terminal. */
ExitCode runPlc(PlcOptions const& options, Context& context);

void addPlcCommand(CLI::App& app, Context& context);

} // namespace velk
