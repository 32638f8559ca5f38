#include "tools/velk/commands/ConfigCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addConfigCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
