#include "tools/velk/commands/ConsoleCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addConsoleCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
