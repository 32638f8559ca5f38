#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addReadCommand(CLI::App& app, Context& context);

} // namespace velk
