#pragma once

#include "tools/velk/context/ExitCode.h"
#include "tools/velk/line/Readings.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace velk {

struct Context;

struct ReadOptions {
    std::vector<std::string> names;
    OutputFormat format = OutputFormat::Table;
};

/** Reads variables once and shows their values. */
ExitCode runRead(ReadOptions const& options, Context& context);

void addReadCommand(CLI::App& app, Context& context);

} // namespace velk
