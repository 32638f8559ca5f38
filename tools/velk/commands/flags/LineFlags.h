#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

/** Lets @p command take a project file (-f) and -q. */
void addProjectOptions(CLI::App& command, Context& context);

/** Lets @p command take the flags of the line, of the station and of the couplers, and those of addProjectOptions(). */
void addSettingOptions(CLI::App& command, Context& context);

/** Lets @p command take the flags of addSettingOptions() and those of the trace. */
void addLineOptions(CLI::App& command, Context& context);

} // namespace velk
