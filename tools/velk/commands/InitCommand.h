#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addInitCommand(CLI::App& app, Context& context);

} // namespace velk
