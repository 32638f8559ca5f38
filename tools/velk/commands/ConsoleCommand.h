#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addConsoleCommand(CLI::App& app, Context& context);

} // namespace velk
