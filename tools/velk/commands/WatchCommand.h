#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addWatchCommand(CLI::App& app, Context& context);

} // namespace velk
