#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addSymbolsCommand(CLI::App& app, Context& context);

} // namespace velk
