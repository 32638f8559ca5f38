#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addPlcCommand(CLI::App& app, Context& context);

} // namespace velk
