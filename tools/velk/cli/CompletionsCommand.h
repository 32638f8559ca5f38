#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addCompletionsCommand(CLI::App& app, Context& context);

} // namespace velk
