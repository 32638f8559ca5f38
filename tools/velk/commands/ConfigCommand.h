#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addConfigCommand(CLI::App& app, Context& context);

} // namespace velk
