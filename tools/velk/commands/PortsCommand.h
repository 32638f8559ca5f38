#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addPortsCommand(CLI::App& app, Context& context);

} // namespace velk
