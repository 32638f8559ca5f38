#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addCheckCommand(CLI::App& app, Context& context);

} // namespace velk
