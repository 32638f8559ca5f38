#pragma once

#include <CLI/CLI.hpp>

namespace velk {

struct Context;

void addWriteCommand(CLI::App& app, Context& context);

} // namespace velk
