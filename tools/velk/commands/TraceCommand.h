#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addTraceCommand(CLI::App& app, Context& context);

/** Lets a command take --trace FILE. */
void addTraceOption(CLI::App& command, Context& context);

} // namespace velk
