#include "tools/velk/commands/HelpCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addHelpCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
