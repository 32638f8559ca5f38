#pragma once

#include "tools/velk/context/ExitCode.h"

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

struct CheckOptions {
    bool scan = false;
    bool json = false;
};

/** Walks the line step by step, or seeks the settings that the PLC answers to. */
ExitCode runCheck(CheckOptions const& options, Context& context);

void addCheckCommand(CLI::App& app, Context& context);

} // namespace velk
