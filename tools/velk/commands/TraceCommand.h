#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addTraceCommand(CLI::App& app, Context& context);

} // namespace velk
