#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addHelpCommand(CLI::App& app, Context& context);

} // namespace velk
